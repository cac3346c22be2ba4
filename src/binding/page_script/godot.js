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

    /**
     * Stands for the property. The channel's own news of a change may come after the manager's, so the
     * value is the one that the game has announced last, unless the page has written another one since.
     */
    function make_property(channel_property, property_name, inside) {
        return new Proxy({}, {
            get(_, key) {
                if (key === "on")
                    return (event, callback) =>
                        keep(inside.callbacks, property_name + "." + event, callback);
                if (key === "value" && inside.announced.has(property_name))
                    return inside.announced.get(property_name);
                return channel_property[key];
            },
            set(_, key, value) {
                if (key !== "value")
                    return false;
                check_value(value);
                if (value !== undefined)  // which the channel does not take
                    inside.announced.delete(property_name);
                channel_property.value = value;
                return true;
            },
        });
    }

    class GodotAbstractObject {
        constructor(name, channel) {
            const inside = {callbacks: new Map(), emitters: new Map(), announced: new Map()};
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

    /** Makes the channel know objects as they are described now, in place of what it knew before. */
    function learn(channel, descriptions, names) {
        const learnt = names.filter(name => has_own(descriptions, name));
        for (const name of learnt)
            new ChannelObject(name, descriptions[name], channel);
        for (const name of learnt)
            channel.objects[name].unwrapProperties();
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

    /** Asks for the descriptions of all objects that are published when the question arrives. */
    function describe(channel, callback) {
        channel.exec({type: MessageTypes.init}, descriptions => {
            channel.exec({type: MessageTypes.idle});
            callback(descriptions);
        });
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
            describe(this.channel, descriptions => {
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

    /** Not before the page's own scripts have had their turn: they may come late, and have to listen. */
    function announce_if_ready() {
        if ($g && is_parsed)
            window.dispatchEvent(new Event("godot.ready"));
    }

    /** After all listeners of the page's own to the same event. */
    function watch_parsing() {
        const when_last = () => {
            is_parsed = true;
            announce_if_ready();
        };
        document.addEventListener("DOMContentLoaded",
            () => window.addEventListener("DOMContentLoaded", when_last, {once: true}), {once: true});
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
            inside.announced.set(property_name, value);
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
     * What the page that was here before has asked for is answered to this one, by the number of the
     * question. So the numbers begin elsewhere in each page, and answers to others are dropped.
     */
    function open_channel(when_open) {
        let channel = null;
        const transport = {
            send: message => qt.webChannelTransport.send(message),
            set onmessage(handler) {
                qt.webChannelTransport.onmessage = message => {
                    const data = typeof message.data === "string" ? JSON.parse(message.data) : message.data;
                    if (data.type !== MessageTypes.response || has_own(channel.execCallbacks, data.id))
                        handler({data: data});
                };
            },
        };
        // The channel counts from 0, and asks its first question as it is made.
        Object.defineProperty(QWebChannel.prototype, "execId", {
            configurable: true,
            set(first) {
                define(this, "execId", first + Math.floor(Math.random() * 2 ** 50));
            },
        });
        channel = new QWebChannel(transport, when_open);
        delete QWebChannel.prototype.execId;
        return channel;
    }

    function begin(channel, manager, descriptions) {
        // A map without a prototype takes any name.
        channel.objects = Object.create(null);
        channel.objects.___cm = manager;
        const names = Object.keys(descriptions).filter(name => name !== "___cm");
        learn(channel, descriptions, names);

        ___godot_channel = channel;
        $g = godot = new Godot();
        for_each_of(names, name => set_up(channel, name));
        announce_if_ready();
    }

    if (!is_parsed)
        watch_parsing();

    const opening = open_channel(channel => {
        const manager = channel.objects.___cm;
        if (!manager)
            return;
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
        // What this first description tells may be out of date by the time that the manager's signals
        // are connected. One that is asked for after that is followed by every change to it.
        connect_manager(manager, channel);
        describe(channel, descriptions => begin(channel, manager, descriptions));
    });
    // Filled when the first description comes, with objects of any name.
    opening.objects = Object.create(null);
})();
