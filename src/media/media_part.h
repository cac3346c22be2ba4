#pragma once

/** What the start and the stop of the library ask of the media part. On the Qt thread. */
namespace marlune::media_part {

/** Chooses how screens are captured, which Qt reads from the environment. At the start. */
void choose_screen_capture();

/** Ends all players and captures, with their threads. After the event loop. */
void close_players();

}  // namespace marlune::media_part
