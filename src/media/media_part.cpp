#include "runtime/media_part.h"

#include "media/video_view.h"

namespace marlune::media_part {

void close_players()
{
    VideoView::close_players();
}

}  // namespace marlune::media_part
