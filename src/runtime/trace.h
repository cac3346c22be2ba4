#pragma once

namespace marlune {

/**
 * Called first by every exported entry point (kind "M": on a thread of the host) and by every
 * factory and start step (kind "T": on the Qt thread), with its qualified name. Empty, so that it
 * costs nothing in a game; a developer who hunts a hang gives it a body for a day.
 */
inline void trace([[maybe_unused]] const char* name, [[maybe_unused]] const char* kind) {}

}  // namespace marlune
