#pragma once

/**
 * What the library's start and stop ask of the media part. Implemented in src/media, as web_part is in
 * src/web.
 */
namespace marlune::media_part {

/** Decides how screens are captured, which Qt reads from the environment. At the start. */
void choose_screen_capture();

/** Ends all that still plays or is captured, with its threads. After the event loop. */
void close_players();

}  // namespace marlune::media_part
