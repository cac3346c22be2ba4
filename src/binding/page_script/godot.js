// The page's access to the objects that the game publishes to it. Runs after Qt's qwebchannel.js.
//
//     window.addEventListener("godot.ready", async () => {
//         $g.player.health.on("changed", health => show(health));
//         $g.player.died.connect(() => show("dead"));
//         $g.player.health.value = 50;
//         show(await $g.player.heal(25));
//     });
//     ...
//     $g.objectRegistered("enemy", () => $g.enemy.taunt());   // for an object that is added later
//
// Each object whose name contains no point becomes $g[name], which is also godot[name]. The game
// chooses all names, so the script never looks them up along a prototype chain.

var $g = null;
var godot = null;
var ___godot_channel = null;

(function () {
    "use strict";

    if (typeof QWebChannel === "undefined" || typeof qt === "undefined" || !qt.webChannelTransport)
        return;

    // The page may define other values under these names later.
    const ChannelObject = QObject;
    const MessageTypes = QWebChannelMessageTypes;

    // --- Helpers

    const has_own = (object, key) => Object.prototype.hasOwnProperty.call(object, key);

    /** Sets an own property of the object, whatever its name. */
    function define(object, key, value) {
        Object.defineProperty(object, key,
            {value: value, writable: true, enumerable: true, configurable: true});
    }

    /** Returns an error whose text is only the message. */
    function failure(message) {
        const error = new Error(message);
        error.name = "";
        return error;
    }

    // Reports an error like an uncaught one.
    const report = self.reportError;

    /**
     * Runs the action for each item, even if it throws for some of them; then throws the first
     * error.
     */
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

    /** The engine drops values that are nested more deeply, and sends no answer either. */
    const DEEPEST_NESTING = 1000;

    /**
     * Throws for values that cannot be sent as JSON, before the channel stores them or waits for an
     * answer.
     */
    function check_value(value, levels_left = DEEPEST_NESTING) {
        if (typeof value === "bigint")
            throw failure("a BigInt cannot be sent to the game, send a number or a text");
        if (value === null || typeof value !== "object")
            return;
        if (levels_left === 0)
            throw failure("a value that is nested more than " + DEEPEST_NESTING
                + " levels deep, or circular, cannot be sent to the game");
        for (const key of Object.keys(value))
            check_value(value[key], levels_left - 1);
    }

    /** Adds a callback to those under a key. */
    function keep(callbacks, key, callback) {
        if (!callbacks.has(key))
            callbacks.set(key, []);
        callbacks.get(key).push(callback);
    }

    /** Calls the stored callbacks; callbacks that are added meanwhile are not called. */
    function call_all(callbacks, values) {
        for_each_of([...callbacks], callback => callback(...values));
    }

    // --- Objects

    const SKIPPED_MEMBERS = ["name", "call", "hasOwnProperty", "indexOf", "__proto__"];

    /**
     * The internal state of the objects, which pages do not see: members may thus have any name.
     */
    const insides = new WeakMap();

    /**
     * Reports a call with a wrong number of arguments. The signature arrives too late to be part of
     * the error.
     */
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
            // The channel's promise returns the result. A callback as last argument is accepted,
            // but ignored.
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

    /** Creates the object that represents a property. */
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
        /** With a callback: calls it whenever an object of that name has been registered. */
        objectRegistered(name, callback) {
            const key = name + ".registered";
            if (callback)
                keep(registration_callbacks, key, callback);
            else if (registration_callbacks.has(key))
                call_all(registration_callbacks.get(key), [name]);
        }

        /** With a callback: calls it whenever an object of that name has been removed. */
        objectRemoved(name, callback) {
            const key = name + ".removed";
            if (callback)
                keep(registration_callbacks, key, callback);
            else
                call_all(registration_callbacks.get(key), [name]);
        }
    }

    /** Returns the internal state of $g[name]. */
    function inside_of(name) {
        const inside = has_own($g, name) ? insides.get($g[name]) : undefined;
        if (!inside)
            throw failure("no such object name " + name);
        return inside;
    }

    // --- Registration and removal

    /** The names of the channel's objects that belong to a published one: itself and its members. */
    function names_of_parts(name, methods, variables) {
        const members = Object.keys(methods).concat(Object.keys(variables));
        return [name, ...members.map(member => name + "." + member)];
    }

    /** Data is plain: the channel's objects must not look for references to other objects in it. */
    function take_data_as_it_is(channel_object) {
        channel_object.unwrapQObject = data => data;
    }

    /** Replaces the channel's descriptions of these objects by the current ones. */
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
     * Requests descriptions of the objects that are published when the request arrives: if
     * `question.objects` is set, of the objects with these names and their members, otherwise of
     * all.
     */
    function describe(channel, question, callback) {
        channel.exec(Object.assign({type: MessageTypes.init}, question), callback);
    }

    /**
     * Sets up objects that are published later. The channel does not describe them to a client, so
     * this class requests descriptions, for all objects registered in the meantime at once.
     */
    class Newcomers {
        constructor(channel) {
            this.channel = channel;
            this.waiting = new Set();
            this.asked_for = null;  // the names in the current request
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

    /**
     * Dispatches the event once, after the page's own scripts have had the chance to listen for it.
     */
    function announce_if_ready() {
        if ($g && is_parsed)
            window.dispatchEvent(new Event("godot.ready"));
    }

    /**
     * Runs after all listeners of the page for the same event. The page can stop the event for
     * later listeners, but not for the first one; document.open() removes that one, so a timer
     * checks as well.
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

    /**
     * Defines the functions on the global object, not enumerable, so that they do not appear among
     * the page's own.
     */
    function offer_globally(functions) {
        for (const name of Object.keys(functions))
            Object.defineProperty(self, name, {value: functions[name], configurable: true});
    }

    /**
     * Signals of the manager that arrive before $g exists are already part of the descriptions from
     * which $g is created.
     */
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
     * Lets the page use channels of its own beside this one. The engine calls `onmessage`, which
     * exists only once, so the page's function is called after `handler`.
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
                return;  // called by a handler of the page that has found this function
            const data = JSON.parse(message.data);
            const parts = data.type === BUNDLE ? data.data : [data];
            for (const part of parts) {
                try {
                    hand_out(part);
                } catch (error) {
                    report(error);
                }
            }
            // One acknowledgement for all parts, which lets the game send more.
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
     * Keeps the page's last write to a property as its value until the game has answered: updates
     * that the game sent before it received the write are out of date.
     */
    class Writes {
        constructor(channel) {
            this.channel = channel;
            this.under_way = new Map();  // by channel object: the number of writes and the property
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

        /** Removes outdated values from an update. */
        correct(update) {
            for (const {object, properties} of update.data) {
                const write = this.under_way.get(this.channel.objects[object]);
                if (write)
                    delete properties[write.property];
            }
        }
    }

    /**
     * Answers to requests of the previous page arrive at this one, with the ids of those requests.
     * Ids therefore start at a random number in each page, and answers with other ids are dropped.
     */
    function open_channel(when_open) {
        let channel = null;
        let writes = null;
        const transport = {
            // The first request, which opens the view's gate, needs no description in its answer.
            // It starts the page: the game sends nothing of before, and may send several messages
            // in one.
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
        // The channel counts from 0 and sends its first request during construction.
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
            else if (message.type !== MessageTypes.idle)  // sent in share_transport()
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
            // An object may have the names of these members, so they are not looked up in $g.
            ___godot_announce_registered: name => Godot.prototype.objectRegistered.call($g, name),
            ___godot_announce_removed: name => Godot.prototype.objectRemoved.call($g, name),
        });
        // Every change after the requested description is reported.
        connect_manager(manager, channel);
        describe(channel, {}, descriptions => begin(channel, manager, descriptions));
    }

    open_channel(channel => {
        // A map without a prototype accepts any name.
        channel.objects = Object.create(null);
        // The first request has opened the gate; this one starts the page.
        describe(channel, {bundles: true, objects: ["___cm"]}, descriptions => {
            learn(channel, descriptions, ["___cm"]);
            if (channel.objects.___cm)
                start(channel, channel.objects.___cm);
        });
    });
})();
