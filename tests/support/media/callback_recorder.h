#pragma once

#include "media/camera_view.h"
#include "media/video_view.h"
#include "support/fill_slot.h"

#include <QDebug>
#include <QString>

#include <utility>

namespace marlune::test {

/** Records a view's calls of its host's callbacks as text. Must outlive these calls. */
class CallbackRecorder {
public:
    void follow_all(VideoCallbacks& callbacks)
    {
#define MARLUNE_FOLLOW(source, name, parameters, signal, slot) follow(callbacks.name, #name);
        MARLUNE_VIDEO_CALLBACKS(MARLUNE_FOLLOW)
#undef MARLUNE_FOLLOW
    }

    void follow_all(CameraCallbacks& callbacks)
    {
#define MARLUNE_FOLLOW(kind, name, parameters, signal, slot) follow(callbacks.name, #name);
        MARLUNE_CAMERA_CALLBACKS(MARLUNE_FOLLOW)
#undef MARLUNE_FOLLOW
    }

    /** The number of callbacks that this object records. */
    int count() const
    {
        return count_;
    }

    /** The calls since the last take(): "volume_changed 0.5 muted_changed true". */
    QString take()
    {
        return std::exchange(text_, QString()).trimmed();
    }

private:
    template <typename Slot>
    void follow(Slot& slot, const char* name)
    {
        ++count_;
        fill(slot, [this, name](const auto&... value) {
            QDebug stream(&text_);
            stream.noquote() << name;
            ((stream << value), ...);
        });
    }

    int count_ = 0;
    QString text_;
};

}  // namespace marlune::test
