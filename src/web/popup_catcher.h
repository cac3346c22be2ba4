#pragma once

namespace marlune {

/**
 * Keeps the lists and calendars of web pages (`<select>`, `<input type=date>`) inside the textures.
 *
 * The engine shows each of them in a QQuickWindow of its own, which belongs to the window that the page is
 * in. From the installation on, its content is moved into that window's scene instead, above the page,
 * and no window of the window system ever comes to be. Once a process.
 */
void install_popup_catcher();

}  // namespace marlune
