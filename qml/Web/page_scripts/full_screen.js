// Escape leaves full screen, since there is no browser window that would do it. This script runs
// before any script of the page, so its listener is the first and the page cannot prevent it.
"use strict";

addEventListener("keydown", event => {
    if (event.key !== "Escape" || !event.isTrusted || !document.fullscreenElement)
        return;
    event.preventDefault();
    event.stopImmediatePropagation();
    document.exitFullscreen();
}, { capture: true });
