// Drag and drop inside a page, emulated with the page's mouse events.
//
// A texture cannot have a drag of the window system (see native_drag.js). The script therefore
// stops the event that would start one and dispatches an event of its own in its place. From then
// on, until the button is released, it turns each mouse move into the events of a drag. The page
// receives no other mouse events meanwhile, as in any drag.
//
// The script runs in the page's own world, because the page must see the properties that are
// defined on the data. It is the first script there, so its listeners run first. A drag stays
// within the frame in which it starts.
"use strict";

(() => {
    // The interval of drag events while the mouse rests, in ms. Pages scroll by them.
    const PULSE = 100;

    const OPERATIONS = {
        __proto__: null,
        none: [],
        copy: ["copy"],
        link: ["link"],
        move: ["move"],
        copyLink: ["copy", "link"],
        copyMove: ["copy", "move"],
        linkMove: ["link", "move"],
        all: ["copy", "move", "link"],
        uninitialized: ["copy", "move", "link"],
    };

    // The current drag, or null.
    let drag = null;
    // The last mouse move. A drag starts at the position of the press, which the mouse has left by
    // then.
    let lastMove = null;
    // A drag has ended before the release of the button: the rest of the gesture is ignored.
    let idle = false;
    // True after a drag: suppresses the click that its last release would cause.
    let swallowClick = false;

    // --- data ------------------------------------------------------------------------------------

    function copyData(from) {
        const to = new DataTransfer();
        for (const item of from?.items ?? []) {
            if (item.kind === "string")
                to.setData(item.type, from.getData(item.type));
            else if (item.getAsFile())
                to.items.add(item.getAsFile());
        }
        // The engine's properties have no effect in data that was not made for a drag of the
        // engine.
        let effectAllowed = "uninitialized";
        let dropEffect = "none";
        Object.defineProperties(to, {
            effectAllowed: {
                get: () => effectAllowed,
                set: value => {
                    const name = `${value}`;
                    if (name in OPERATIONS)
                        effectAllowed = name;
                },
            },
            dropEffect: {
                get: () => dropEffect,
                set: value => {
                    const name = `${value}`;
                    if (["none", "copy", "link", "move"].includes(name))
                        dropEffect = name;
                },
            },
        });
        return to;
    }

    function preferredOperation() {
        // A selection in editable content is moved when it is dropped; everything else is copied.
        if (drag.data.effectAllowed === "uninitialized" && drag.removeSelection)
            return "move";
        return OPERATIONS[drag.data.effectAllowed][0] ?? "none";
    }

    // --- positions
    // ---------------------------------------------------------------------------------

    function elementAt(x, y) {
        let element = document.elementFromPoint(x, y);
        while (element?.shadowRoot) {
            const inner = element.shadowRoot.elementFromPoint(x, y);
            if (!inner || inner === element)
                break;
            element = inner;
        }
        return element;
    }

    function isTextControl(element) {
        if (element instanceof HTMLTextAreaElement)
            return !element.disabled && !element.readOnly;
        return element instanceof HTMLInputElement && !element.disabled && !element.readOnly
            && ["text", "search", "url", "tel", "password", "email", "number"].includes(element.type);
    }

    // Returns the element that accepts text dropped at `element`: a text control, an editable
    // element, or null.
    function editableAt(element) {
        if (isTextControl(element))
            return element;
        return element?.isContentEditable ? element : null;
    }

    // --- events ----------------------------------------------------------------------------------

    function fire(type, target, mouse, options = {}) {
        const event = new DragEvent(type, {
            bubbles: true,
            cancelable: true,
            composed: true,
            view: window,
            clientX: mouse.clientX,
            clientY: mouse.clientY,
            screenX: mouse.screenX,
            screenY: mouse.screenY,
            ctrlKey: mouse.ctrlKey,
            shiftKey: mouse.shiftKey,
            altKey: mouse.altKey,
            metaKey: mouse.metaKey,
            buttons: mouse.buttons,
            dataTransfer: drag.data,
            ...options,
        });
        return target.dispatchEvent(event);
    }

    function silence(event) {
        event.preventDefault();
        event.stopImmediatePropagation();
    }

    // --- the course of a drag --------------------------------------------------------------------

    function begin(event) {
        const source = event.target;
        drag = { source, data: copyData(event.dataTransfer), target: null, operation: "none" };
        drag.removeSelection = selectionRemover(source);
        drag.caret = caret();
        const ghostText = event.dataTransfer?.getData("text/plain");
        if (!fire("dragstart", source, event)) {
            drag = null;
            return;
        }
        drag.mouse = lastMove ?? event;
        drag.ghost = makeGhost(ghostText || (source.innerText ?? source.textContent ?? ""));
        drag.pulse = setInterval(guarded(() => step(drag.mouse)), PULSE);
        // The event that the engine sends when it takes the pointer for a drag.
        source.dispatchEvent(new PointerEvent("pointercancel", {
            bubbles: true, composed: true, pointerId: 1, pointerType: "mouse", isPrimary: true,
        }));
    }

    function step(mouse) {
        drag.mouse = mouse;
        drag.ghost.moveTo(mouse.clientX, mouse.clientY);
        drag.data.dropEffect = "none";
        const goesOn = fire("drag", drag.source, mouse);
        if (!drag)
            return;
        if (!goesOn) {
            idle = true;
            end(mouse, false);
            return;
        }
        enter(elementAt(mouse.clientX, mouse.clientY), mouse);
        if (drag?.target)
            over(mouse);
    }

    function enter(target, mouse) {
        const left = drag.target;
        if (target === left)
            return;
        drag.target = target;
        drag.operation = "none";
        if (target) {
            drag.data.dropEffect = preferredOperation();
            fire("dragenter", target, mouse, { relatedTarget: left });
        }
        if (left)
            fire("dragleave", left, mouse, { relatedTarget: target, cancelable: false });
    }

    function over(mouse) {
        drag.data.dropEffect = preferredOperation();
        const ignored = fire("dragover", drag.target, mouse);
        if (!drag)
            return;
        let wanted = drag.data.dropEffect;
        if (ignored)
            wanted = editableAt(drag.target) && hasText() ? preferredOperation() : "none";
        drag.operation = OPERATIONS[drag.data.effectAllowed].includes(wanted) ? wanted : "none";
    }

    function hasText() {
        return drag.data.types.includes("text/plain");
    }

    function end(mouse, dropped) {
        const { source, target, operation, ghost, pulse } = drag;
        clearInterval(pulse);
        ghost.remove();
        if (dropped && target && operation !== "none") {
            drag.data.dropEffect = operation;
            if (fire("drop", target, mouse, { buttons: 0 }))
                insert(target, mouse);
        } else {
            drag.operation = "none";
            if (target)
                fire("dragleave", target, mouse, { cancelable: false });
        }
        drag.data.dropEffect = drag.operation;
        fire("dragend", source, mouse, { cancelable: false, buttons: 0 });
        drag = null;
    }

    // --- dropped text ----------------------------------------------------------------------------

    // Returns a function that removes the selected text from its source; null if the source is not
    // editable.
    function selectionRemover(source) {
        const element = source instanceof Element ? source : source.parentElement;
        if (isTextControl(element) && element.selectionStart !== element.selectionEnd) {
            const { selectionStart, selectionEnd } = element;
            return () => {
                element.focus();
                element.setSelectionRange(selectionStart, selectionEnd);
                document.execCommand("delete");
            };
        }
        const selection = getSelection();
        if (!element?.isContentEditable || selection.isCollapsed)
            return null;
        const range = selection.getRangeAt(0).cloneRange();
        return () => {
            select(range);
            document.execCommand("delete");
        };
    }

    function select(range) {
        getSelection().removeAllRanges();
        getSelection().addRange(range);
    }

    // Stored at the start: engines may move the caret when the mouse reaches a text control.
    function caret() {
        const field = document.activeElement;
        return { field, at: isTextControl(field) ? field.selectionEnd : null };
    }

    function insert(target, mouse) {
        const field = editableAt(target);
        const text = drag.data.getData("text/plain");
        if (!field || text === "")
            return;
        const place = isTextControl(field) ? null
            : document.caretRangeFromPoint(mouse.clientX, mouse.clientY);
        const { value, selectionEnd } = field;
        const { field: focused, at } = drag.caret;
        if (drag.operation === "move" && drag.removeSelection)
            drag.removeSelection();
        field.focus();
        if (place)
            select(place);
        else if (isTextControl(field) && value === field.value && selectionEnd !== null)
            field.setSelectionRange(...Array(2).fill(focused === field ? at : value.length));
        // Unlike setting the value, this can be undone and notifies the page.
        document.execCommand("insertText", false, text);
    }

    // --- the visible drag
    // --------------------------------------------------------------------------

    function makeGhost(text) {
        const host = document.createElement("div");
        const words = text.trim().replace(/\s+/g, " ");
        host.style.cssText = "all:initial!important;position:fixed!important;left:0!important;"
            + "top:0!important;z-index:2147483647!important;pointer-events:none!important";
        const label = document.createElement("div");
        label.textContent = words.length > 40 ? words.slice(0, 39) + "…" : words || "…";
        label.style.cssText = "font:13px sans-serif;color:#f6efdd;background:#0f2340d9;"
            + "border:1px solid #3b618a;border-radius:9px;padding:3px 9px;white-space:nowrap";
        host.attachShadow({ mode: "closed" }).append(label);
        document.documentElement.append(host);
        return {
            moveTo: (x, y) => label.style.transform = `translate(${x + 12}px, ${y + 12}px)`,
            remove: () => host.remove(),
        };
    }

    // --- event listeners
    // ---------------------------------------------------------------------------

    // A page can break built-in functions and members of the document that this script uses. A drag
    // that fails because of that must not keep the mouse from the page permanently.
    function guarded(work) {
        return argument => {
            try {
                work(argument);
            } catch (error) {
                abandon();
                throw error;
            }
        };
    }

    function abandon() {
        const { ghost, pulse } = drag ?? {};
        drag = null;
        idle = false;
        swallowClick = false;
        clearInterval(pulse);
        ghost?.remove();
    }

    function listen(types, listener) {
        for (const type of types)
            addEventListener(type, guarded(listener), { capture: true, passive: false });
    }

    listen(["dragstart"], event => {
        if (!event.isTrusted)
            return;
        silence(event);
        if (!drag)
            begin(event);
    });

    listen(["mousedown"], event => idle &&= !event.isTrusted);

    listen(["mousemove"], event => {
        if (!event.isTrusted)
            return;
        lastMove = event;
        // The button may have been released outside this frame.
        const held = (event.buttons & 1) !== 0;
        idle &&= held;
        if (!drag && !idle)
            return;
        silence(event);
        if (drag && held)
            step(event);
        else if (drag)
            end(event, false);
    });

    listen(["mouseup"], event => {
        if (!(drag || idle) || !event.isTrusted || event.button !== 0)
            return;
        silence(event);
        if (drag)
            step(event);
        if (drag)
            end(event, true);
        idle = false;
        swallowClick = true;
        setTimeout(() => swallowClick = false);
    });

    listen(["keydown"], event => {
        if (!drag || !event.isTrusted)
            return;
        silence(event);
        if (event.key !== "Escape")
            return;
        idle = true;
        end(drag.mouse, false);
    });

    listen(["click"], event => {
        if (swallowClick && event.isTrusted)
            silence(event);
        swallowClick = false;
    });

    // Without a drag of the window system the engine would continue to select text.
    listen(["selectstart", "contextmenu", "mouseover", "mouseout", "mouseenter", "mouseleave",
        "pointermove", "pointerup", "pointerover", "pointerout", "pointerenter", "pointerleave"], event => {
        if ((drag || idle) && event.isTrusted)
            silence(event);
    });
})();
