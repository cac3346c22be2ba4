#pragma once

namespace marlune {

/**
 * Keeps the popups of web pages (`<select>`, `<input type=date>`) inside the textures.
 *
 * The engine shows each popup in a QQuickWindow of its own, which belongs to the page's window.
 * After the installation, the content of each popup is moved into the scene of that window instead,
 * above the page, and no window of the window system is ever created. Call once per process.
 */
void install_popup_catcher();

}  // namespace marlune
