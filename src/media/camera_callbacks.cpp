// The slots of CameraView that report its camera's signals to the host.

#include "media/camera_view.h"

namespace marlune {

#define MARLUNE_TELL_Nothing(name, parameters, slot) \
    void CameraView::slot()                          \
    {                                                \
        callbacks_.name.call(this);                  \
    }
#define MARLUNE_TELL_Value(name, parameters, slot) \
    void CameraView::slot parameters               \
    {                                              \
        callbacks_.name.call(this, value);         \
    }
#define MARLUNE_TELL_Error(name, parameters, slot)                                      \
    void CameraView::slot(QCamera::Error error, QString errorString)                    \
    {                                                                                   \
        callbacks_.name.call(this, static_cast<int>(error), errorString.toStdString()); \
    }
#define MARLUNE_TELL(kind, name, parameters, signal, slot) \
    MARLUNE_TELL_##kind(name, parameters, slot)

MARLUNE_CAMERA_CALLBACKS(MARLUNE_TELL)

#undef MARLUNE_TELL
#undef MARLUNE_TELL_Error
#undef MARLUNE_TELL_Value
#undef MARLUNE_TELL_Nothing

}  // namespace marlune
