#pragma once

namespace marlune {

/** Brings the animations of all scenes to a stand, for good. On the Qt thread, after its loop. */
void end_animations();

}  // namespace marlune
