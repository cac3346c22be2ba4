#pragma once

#include <marlune/mview.h>

namespace marlune {

/**
 * A view that shows a QML component of one of the library's modules, such as "Splash" of "Splash".
 * MView tells what all views have in common.
 */
class MARLUNE_EXPORT MQuickView : public MView {
public:
    /** Makes a view. Blocks until the Qt thread is ready; waits for ever if the library is never started. */
    MQuickView();

    void reset() const override;

    /**
     * Loads a component and draws its first frame; a scene that was loaded before is torn down
     * first. Blocks for as long as this takes.
     *
     * Set the instance, the devices and the resolution before. Components find the context properties
     * "ctx" and "view" (the view) and "PATH_ADDON" (the add-on directory).
     *
     * @return true when the scene stands. False without a view, and when the component cannot be
     *         loaded, created or given its graphics: the messages that Qt's logging has received
     *         by then say why, and the view can be loaded again. The module "Web" is refused: its
     *         component belongs to web views.
     */
    bool load(std::string module, std::string name) const;
};

static_assert(sizeof(MQuickView) == sizeof(MView));

}  // namespace marlune
