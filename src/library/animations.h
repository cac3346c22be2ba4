#pragma once

namespace marlune {

/** Stops the animations of all scenes. On the Qt thread, after its event loop. */
void end_animations();

}  // namespace marlune
