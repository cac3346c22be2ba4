import QtQuick
import Web // qmllint disable unused-imports

// Follows the published object "player", and does with it what the text of a pressed key stands for.
Item {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    // The singleton is made in C++, where qmllint does not see it.
    // qmllint disable unqualified

    // Null while nobody publishes it. To read the names is what makes the binding follow them.
    readonly property var player: PublishedObjects.names.includes("player")
        ? PublishedObjects.find("player") : null
    readonly property var health: player ? PublishedObjects.findProperty("player", "health") : null
    readonly property int points: health?.value ?? -1

    // Found once, and kept when it should not be.
    property var kept: null

    function report(text: string) {
        javaScriptConsoleMessage(0, text, 0, "PublishedProbe");
    }

    function damage(points: int) {
        health.value -= points;
    }

    function heal(points: int): int {
        return PublishedObjects.call("player", "heal", [points]);
    }

    onPointsChanged: report("points " + points)

    focus: true
    Keys.onPressed: event => {
        switch (event.text) {
        case "d":
            return damage(30);
        case "h":
            return report("healed " + heal(5));
        case "i":
            return report("invoked " + player.___invoke_method("heal", [[1, { two: 2 }]]));
        case "k":
            kept = PublishedObjects.findProperty("player", "health");
            return report("kept " + kept.value);
        case "K":
            return report("still kept " + kept?.value);
        case "l":
            return report("names " + PublishedObjects.names);
        case "n":
            return report("nothing " + PublishedObjects.find("nobody")
                + PublishedObjects.findProperty("nobody", "health")
                + PublishedObjects.findProperty("player", "nothing"));
        case "p":
            return report("now " + points);
        case "u":
            return report("undefined " + PublishedObjects.call("nobody", "heal", [5]));
        }
    }

    Connections {
        target: PublishedObjects

        function onObjectRegistered(name: string) {
            root.report(`${name} has come with ${root.points}`);
        }

        function onObjectRemoved(name: string) {
            root.report(`${name} has gone with ${root.points}`);
        }

        function onSignalEmitted(object_name: string, signal_name: string, args: var) {
            root.report(`${object_name}.${signal_name}(${args})`);
        }
    }

    // qmllint enable unqualified

    Text {
        anchors.centerIn: parent
        text: root.points < 0 ? "nobody plays" : "health " + root.points
    }
}
