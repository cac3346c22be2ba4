// Prevents all drags of the window system: such a drag would open a window of its own, and would
// block the Qt thread until the release of a mouse button that the system does not know of. This
// script runs in a world of its own, so that it also works in pages whose scripts are disabled.
// Where scripts are enabled, drag_and_drop.js replaces the drag.
"use strict";

addEventListener("dragstart", event => {
    if (event.isTrusted)
        event.preventDefault();
}, { capture: true });
