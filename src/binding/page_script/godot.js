// What a page sees of the objects that the game publishes to it. Comes after Qt's qwebchannel.js.
//
//     window.addEventListener("godot.ready", async () => {
//         $g.player.health.on("changed", health => show(health));
//         $g.player.died.connect(() => show("dead"));
//         $g.player.health.value = 50;
//         show(await $g.player.heal(25));
//     });
//     ...
//     $g.objectRegistered("enemy", () => $g.enemy.taunt());   // for one that comes later
//
// Each object that has no point in its name becomes $g[name], which is also godot[name]. All names are
// the game's to choose, so none of them is ever looked up along a prototype.

var $g = null;
var godot = null;
var ___godot_channel = null;

(function () {
    "use strict";

    if (typeof QWebChannel === "undefined" || typeof qt === "undefined" || !qt.webChannelTransport)
        return;

    // The page may define its own things under these names later.
    const ChannelObject = QObject;
    const MessageTypes = QWebChannelMessageTypes;

    // --- Helpers

    const has_own = (object, key) => Object.prototype.hasOwnProperty.call(object, key);

    /** Sets a property of the object itself, whatever its name. */
    function define(object, key, value) {
        Object.defineProperty(object, key,
            {value: value, writable: true, enumerable: true, configurable: true});
    }

    /** An error whose text is the message and nothing else. */
    function failure(message) {
        const error = new Error(message);
        error.name = "";
        return error;
    }

    // As for an error that nobody catches.
    const report = self.reportError;

    /** Does it for each, also when it fails for some; then fails with the first failure. */
    function for_each_of(items, action) {
        const failures = [];
        for (const item of items) {
            try {
                action(item);
            } catch (error) {
                failures.push(error);
            }
        }
        if (failures.length > 0)
            throw failures[0];
    }

    /** What is nested more deeply does not get through the engine, which then gives no answer either. */
    const DEEPEST_NESTING = 1000;

    /** Fails for what has no JSON that arrives, before the channel has kept it or waits for an answer. */
    function check_value(value, levels_left = DEEPEST_NESTING) {
        if (typeof value === "bigint")
            throw failure("a BigInt cannot be sent to the game, send a number or a text");
        if (value === null || typeof value !== "object")
            return;
        if (levels_left === 0)
            throw failure("a value that is nested more than " + DEEPEST_NESTING
                + " levels deep, or without an end, cannot be sent to the game");
        for (const key of Object.keys(value))
            check_value(value[key], levels_left - 1);
    }

    /** Keeps a callback under a key, beside those that are there. */
    function keep(callbacks, key, callback) {
        if (!callbacks.has(key))
            callbacks.set(key, []);
        callbacks.get(key).push(callback);
    }

    /** Calls kept callbacks; one that keeps another one meanwhile does not disturb. */
    function call_all(callbacks, values) {
        for_each_of([...callbacks], callback => callback(...values));
    }

    // --- Objects

    const SKIPPED_MEMBERS = ["name", "call", "hasOwnProperty", "indexOf", "__proto__"];

    /** What pages do not see of their objects: a member of any name has its place there. */
    const insides = new WeakMap();

    /** Tells of a call with a wrong number of arguments. The signature comes too late to be thrown. */
    function refuse_call(channel_object, object_name, method_name, required, provided) {
        const message = "[" + object_name + "] function call '" + method_name + "' requires "
            + required + " parameter(s), but " + provided + " provided";
        const report = signature =>
            console.error(signature ? message + "\n    signature: " + signature : message);
        channel_object.get_method_signature(method_name).then(report, () => report(""));
        throw failure(message);
    }

    function make_method(channel_object, object_name, method_name, entry) {
        const required = Object.keys(entry.args).length;
        const method = function (...values) {
            // The result comes by the channel's promise. A callback is taken for politeness only.
            if (typeof values[values.length - 1] === "function")
                values.pop();
            if (values.length !== required)
                refuse_call(channel_object, object_name, method_name, required, values.length);
            values.forEach(value => check_value(value));
            return channel_object.___invoke_method(method_name, values);
        };
        for (const key of Object.keys(entry))
            define(method, key, entry[key]);
        define(method, "object_name", object_name + "." + method_name);
        return method;
    }

    function make_signal(method, signal_name, inside) {
        const key = signal_name + ".signal";
        define(method, "connect", callback => keep(inside.callbacks, key, callback));
        inside.emitters.set(signal_name, values => {
            if (inside.callbacks.has(key))
                call_all(inside.callbacks.get(key), values);
        });
    }

    /** Stands for the property. */
    function make_property(channel_property, property_name, inside) {
        return new Proxy({}, {
            get(_, key) {
                if (key === "on")
                    return (event, callback) =>
                        keep(inside.callbacks, property_name + "." + event, callback);
                return channel_property[key];
            },
            set(_, key, value) {
                if (key !== "value")
                    return false;
                check_value(value);
                channel_property.value = value;
                return true;
            },
        });
    }

    class GodotAbstractObject {
        constructor(name, channel) {
            const inside = {callbacks: new Map(), emitters: new Map()};
            insides.set(this, inside);

            const channel_object = channel.objects[name];
            const methods = channel_object.methodsMap;
            const variables = channel_object.variablesMap;
            const wanted = member => !SKIPPED_MEMBERS.includes(member);
            for (const member of Object.keys(methods).filter(wanted)) {
                const method = make_method(channel_object, name, member, methods[member]);
                if (methods[member].is_signal)
                    make_signal(method, member, inside);
                define(this, member, method);
            }
            for (const member of Object.keys(variables).filter(wanted)) {
                const channel_property = channel.objects[name + "." + member] || {};
                define(this, member, make_property(channel_property, member, inside));
            }
        }
    }

    // --- The one object that holds them

    const registration_callbacks = new Map();

    class Godot {
        /** With a callback: calls it whenever an object of that name has come. */
        objectRegistered(name, callback) {
            const key = name + ".registered";
            if (callback)
                keep(registration_callbacks, key, callback);
            else if (registration_callbacks.has(key))
                call_all(registration_callbacks.get(key), [name]);
        }

        /** With a callback: calls it whenever an object of that name has gone. */
        objectRemoved(name, callback) {
            const key = name + ".removed";
            if (callback)
                keep(registration_callbacks, key, callback);
            else
                call_all(registration_callbacks.get(key), [name]);
        }
    }

    /** What is behind $g[name]. */
    function inside_of(name) {
        const inside = has_own($g, name) ? insides.get($g[name]) : undefined;
        if (!inside)
            throw failure("no such object name " + name);
        return inside;
    }

    // --- Coming and going

    /** The names of the channel's objects that belong to a published one: itself and its members. */
    function names_of_parts(name, methods, variables) {
        const members = Object.keys(methods).concat(Object.keys(variables));
        return [name, ...members.map(member => name + "." + member)];
    }

    /** What the channel's objects would look for references to others in is plain data. */
    function take_data_as_it_is(channel_object) {
        channel_object.unwrapQObject = data => data;
    }

    /** Makes the channel know objects as they are described now, in place of what it knew before. */
    function learn(channel, descriptions, names) {
        for (const name of names.filter(name => has_own(descriptions, name)))
            take_data_as_it_is(new ChannelObject(name, descriptions[name], channel));
    }

    function is_shown(channel, name) {
        const channel_object = channel.objects[name];
        return !name.includes(".") && Boolean(channel_object) && "isContextObject" in channel_object;
    }

    function set_up(channel, name) {
        if (!is_shown(channel, name))
            return;
        define($g, name, new GodotAbstractObject(name, channel));
        self.___godot_announce_registered(name);
    }

    /**
     * Asks for descriptions of what is published when the question arrives: by `question.objects`, which
     * are names, of these objects and their members, else of all.
     */
    function describe(channel, question, callback) {
        channel.exec(Object.assign({type: MessageTypes.init}, question), callback);
    }

    /**
     * Sets up objects that come later. A client of the channel is not told what they are, so it asks, for
     * all that have come in the meantime at once.
     */
    class Newcomers {
        constructor(channel) {
            this.channel = channel;
            this.waiting = new Set();
            this.asked_for = null;  // the names that the question under way is about
        }

        add(name) {
            this.waiting.add(name);
            if (!this.asked_for)
                this.ask();
        }

        remove(name) {
            this.waiting.delete(name);
            if (this.asked_for)
                this.asked_for.delete(name);
        }

        ask() {
            this.asked_for = this.waiting;
            this.waiting = new Set();
            describe(this.channel, {objects: [...this.asked_for]}, descriptions => {
                const names = this.asked_for;
                this.asked_for = null;
                if (this.waiting.size > 0)
                    this.ask();
                for_each_of(names, name => this.welcome(name, descriptions));
            });
        }

        welcome(name, descriptions) {
            learn(this.channel, descriptions, [name]);
            if (!is_shown(this.channel, name))
                return;
            const {methodsMap, variablesMap} = this.channel.objects[name];
            learn(this.channel, descriptions, names_of_parts(name, methodsMap, variablesMap).slice(1));
            set_up(this.channel, name);
        }
    }

    function forget(channel, name) {
        if (is_shown(channel, name)) {
            const {methodsMap, variablesMap} = channel.objects[name];
            for (const part of names_of_parts(name, methodsMap, variablesMap))
                delete channel.objects[part];
        }
        if (has_own($g, name))
            delete $g[name];
    }

    // --- The start

    let is_parsed = typeof document === "undefined" || document.readyState !== "loading";

    /** Once, and not before the page's own scripts have had their turn: they have to listen. */
    function announce_if_ready() {
        if ($g && is_parsed)
            window.dispatchEvent(new Event("godot.ready"));
    }

    /**
     * After all listeners of the page's own to the same event. The page can keep later ones from hearing
     * it, but not the very first; document.open() takes that away, so the time tells as well.
     */
    function watch_parsing() {
        const when_parsed = () => {
            if (is_parsed)
                return;
            is_parsed = true;
            announce_if_ready();
        };
        const look = () => {
            const timing = performance.timing;
            if (document.readyState === "complete" || timing.domContentLoadedEventEnd > 0)
                when_parsed();
            else
                setTimeout(look, 50);
        };
        const turn = new MessageChannel();
        turn.port1.onmessage = when_parsed;
        window.addEventListener("DOMContentLoaded", () => turn.port2.postMessage(null),
            {capture: true, once: true});
        setTimeout(look, 50);
    }

    /** Reached as properties of the global object, where they do not show up among the page's own. */
    function offer_globally(functions) {
        for (const name of Object.keys(functions))
            Object.defineProperty(self, name, {value: functions[name], configurable: true});
    }

    /** What the manager tells before $g is there is part of what $g is made from. */
    function connect_manager(manager, channel) {
        const when_ready = handler => (...values) => {
            if ($g)
                handler(...values);
        };
        manager.gdscriptSignalEmitted.connect(when_ready((object_name, signal_name, values) => {
            const emit = inside_of(object_name).emitters.get(signal_name);
            if (emit)
                emit(values);
        }));
        manager.propChanged.connect(when_ready((object_name, property_name, value) => {
            const inside = inside_of(object_name);
            const key = property_name + ".changed";
            if (inside.callbacks.has(key))
                call_all(inside.callbacks.get(key), [value]);
        }));
        manager.objectRegistered.connect(when_ready(name => self.___godot_set_up(name)));
        manager.objectdeRegistered.connect(when_ready(name => {
            self.___godot_take_down(name);
            self.___godot_announce_removed(name);
        }));
    }

    /**
     * Lets the page have channels of its own beside this one. The engine calls `onmessage`, which is one
     * place for all, so what the page puts there is called after `handler`.
     */
    function share_transport(transport, handler) {
        const BUNDLE = 100;  // several messages in one
        let handler_of_page = null;
        const handed_out = new WeakSet();

        const hand_out = part => {
            handler(part);
            if (typeof handler_of_page !== "function")
                return;
            const message = {data: JSON.stringify(part)};
            handed_out.add(message);
            handler_of_page.call(transport, message);
        };
        const receive = message => {
            if (handed_out.has(message))
                return;  // by a handler of the page that calls what it has found here
            const data = JSON.parse(message.data);
            const parts = data.type === BUNDLE ? data.data : [data];
            for (const part of parts) {
                try {
                    hand_out(part);
                } catch (error) {
                    report(error);
                }
            }
            // Once for all, which lets the game send more.
            if (parts.some(part => part.type === MessageTypes.propertyUpdate))
                transport.send(JSON.stringify({type: MessageTypes.idle}));
        };
        Object.defineProperty(transport, "onmessage", {
            configurable: true,
            enumerable: true,
            get: () => receive,
            set: replacement => handler_of_page = replacement,
        });
    }

    /**
     * Makes the page's last write of a property the value that it has until the game has answered: what
     * the game has said before it knew of that write is out of date.
     */
    class Writes {
        constructor(channel) {
            this.channel = channel;
            this.under_way = new Map();  // by the channel's objects: how many, and of which property
        }

        send(message, exec) {
            const target = this.channel.objects[message.object];
            const count = this.under_way.has(target) ? this.under_way.get(target).count : 0;
            this.under_way.set(target, {count: count + 1, property: message.property});
            exec(message, value => this.take_answer(target, value));
        }

        take_answer(target, value) {
            const write = this.under_way.get(target);
            if (--write.count > 0)
                return;
            this.under_way.delete(target);
            if (value !== undefined)
                target.__propertyCache__[write.property] = value;
        }

        /** Takes out of an update what is out of date. */
        correct(update) {
            for (const {object, properties} of update.data) {
                const write = this.under_way.get(this.channel.objects[object]);
                if (write)
                    delete properties[write.property];
            }
        }
    }

    /**
     * What the page that was here before has asked for is answered to this one, by the number of the
     * question. So the numbers begin elsewhere in each page, and answers to others are dropped.
     */
    function open_channel(when_open) {
        let channel = null;
        let writes = null;
        const transport = {
            // The first question, which opens the view's gate, need not be answered with anything. It
            // begins the page: the game sends it nothing of before, and several messages in one.
            send: message => qt.webChannelTransport.send(channel ? message
                : JSON.stringify(Object.assign(JSON.parse(message), {bundles: true, objects: []}))),
        };
        share_transport(qt.webChannelTransport, data => {
            if (data.type === MessageTypes.response && !has_own(channel.execCallbacks, data.id))
                return;
            if (data.type === MessageTypes.propertyUpdate)
                writes.correct(data);
            transport.onmessage({data: data});
        });
        // The channel counts from 0, and asks its first question as it is made.
        Object.defineProperty(QWebChannel.prototype, "execId", {
            configurable: true,
            set(first) {
                define(this, "execId", first + Math.floor(Math.random() * 2 ** 50));
            },
        });
        channel = new QWebChannel(transport, when_open);
        delete QWebChannel.prototype.execId;

        writes = new Writes(channel);
        const exec = channel.exec;
        channel.exec = (message, callback) => {
            if (message.type === MessageTypes.setProperty && !callback)
                writes.send(message, exec);
            else if (message.type !== MessageTypes.idle)  // which is said where messages come in
                exec(message, callback);
        };
        return channel;
    }

    function begin(channel, manager, descriptions) {
        const names = Object.keys(descriptions).filter(name => name !== "___cm");
        learn(channel, descriptions, names);

        ___godot_channel = channel;
        $g = godot = new Godot();
        for_each_of(names, name => set_up(channel, name));
        announce_if_ready();
    }

    if (!is_parsed)
        watch_parsing();

    function start(channel, manager) {
        const newcomers = new Newcomers(channel);
        offer_globally({
            ___godot_set_up: name => newcomers.add(name),
            ___godot_take_down: name => {
                newcomers.remove(name);
                forget(channel, name);
            },
            // An object may have the name of these members, so they are not looked up in $g.
            ___godot_announce_registered: name => Godot.prototype.objectRegistered.call($g, name),
            ___godot_announce_removed: name => Godot.prototype.objectRemoved.call($g, name),
        });
        // A description that is asked for after this is followed by every change to it.
        connect_manager(manager, channel);
        describe(channel, {}, descriptions => begin(channel, manager, descriptions));
    }

    open_channel(channel => {
        // A map without a prototype takes any name.
        channel.objects = Object.create(null);
        // Who was let in by the first question begins the page by this one.
        describe(channel, {bundles: true, objects: ["___cm"]}, descriptions => {
            learn(channel, descriptions, ["___cm"]);
            if (channel.objects.___cm)
                start(channel, channel.objects.___cm);
        });
    });
})();
