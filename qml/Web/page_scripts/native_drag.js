// No drag of the window system ever begins: it would open a window of its own, and would keep the Qt
// thread until a mouse button is let go that the system knows nothing of. In a world of its own, this
// holds for pages that run no scripts, too. Where they do, drag_and_drop.js takes the drag over.
"use strict";

addEventListener("dragstart", event => {
    if (event.isTrusted)
        event.preventDefault();
}, { capture: true });
