#pragma once

#include <marlune/mview.h>

namespace marlune {

/**
 * A view that shows a QML component of one of the library's modules, for example "Splash" of
 * "Splash". See MView for what all views have in common.
 */
class MARLUNE_EXPORT MQuickView : public MView {
public:
    /**
     * Creates a view. Blocks until the Qt thread is ready, and forever if the library is never
     * started.
     */
    MQuickView();

    void reset() const override;

    /**
     * Loads a component and draws its first frame. Releases a scene that was loaded before first.
     * Blocks until the scene is ready.
     *
     * Set the instance, the devices and the resolution before. Components can use the context
     * properties "ctx" and "view" (the view) and "PATH_ADDON" (the add-on directory).
     *
     * @return true when the scene is ready. False without a view, and if the component cannot be
     *         loaded, created or rendered: in that case Qt's log contains the reason, and the view
     *         can be loaded again. The module "Web" is refused: only web views can load its
     *         component.
     */
    bool load(std::string module, std::string name) const;
};

static_assert(sizeof(MQuickView) == sizeof(MView));

}  // namespace marlune
