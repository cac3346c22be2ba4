#pragma once

/** What the library's stop asks of the media part. Implemented in src/media, as web_part is in src/web. */
namespace marlune::media_part {

/** Ends all that still plays or is captured, with its threads. After the event loop. */
void close_players();

}  // namespace marlune::media_part
