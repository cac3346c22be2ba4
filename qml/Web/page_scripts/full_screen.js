// Escape leaves the full screen, whatever the page makes of the key: as the first to hear of it, for
// this script runs before any of the page's own. No browser window is there to do it.
"use strict";

addEventListener("keydown", event => {
    if (event.key !== "Escape" || !event.isTrusted || !document.fullscreenElement)
        return;
    event.preventDefault();
    event.stopImmediatePropagation();
    document.exitFullscreen();
}, { capture: true });
