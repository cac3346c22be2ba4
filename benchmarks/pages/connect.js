// Connects to the host's object "bench", on each side in its own way.

"use strict";

const is_library = location.protocol === "res:";
const ready = new Promise(resolve => addEventListener("godot.ready", resolve));

function load_script(url) {
    return new Promise((resolve, reject) => {
        const script = document.createElement("script");
        script.src = url;
        script.onload = resolve;
        script.onerror = () => reject(new Error("cannot load " + url));
        document.head.append(script);
    });
}

async function connect_library() {
    await ready;
    const object = $g.bench;
    return {
        add: number => object.add(number),
        on_tick: callback => object.tick.connect(callback),
        on_number: callback => object.number.on("changed", callback),
    };
}

async function connect_raw() {
    await load_script("/qwebchannel.js");
    const channel = await new Promise(resolve => new QWebChannel(qt.webChannelTransport, resolve));
    const object = channel.objects.bench;
    return {
        add: number => object.add(number),
        on_tick: callback => object.tick.connect(callback),
        on_number: callback => object.number_changed.connect(() => callback(object.number)),
    };
}

const connected = is_library ? connect_library() : connect_raw();
