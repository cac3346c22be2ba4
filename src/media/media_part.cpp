#include "runtime/media_part.h"

#include "media/camera_view.h"
#include "media/screen_recorder.h"
#include "media/video_view.h"

namespace marlune::media_part {

void close_players()
{
    VideoView::close_players();
    CameraView::close_cameras();
    ScreenRecorder::close_all();
}

}  // namespace marlune::media_part
