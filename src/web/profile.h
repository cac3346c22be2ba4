#pragma once

class QQuickWebEngineProfile;

namespace marlune {

/** The one browser profile, shared by all web views; null before the start. For any thread. */
QQuickWebEngineProfile* shared_profile();

/** Takes the engine's default profile and configures it. Once, on the Qt thread. */
QQuickWebEngineProfile* set_up_shared_profile();

}  // namespace marlune
