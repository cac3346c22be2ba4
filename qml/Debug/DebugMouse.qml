pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts

/*!
    Shows input events as they arrive: a crosshair with the pointer's position and a fading trail,
    the held buttons and keys, and a log of presses, wheel steps and keys, newest first.
*/
Item {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    readonly property color ivory: "#f6efdd"
    readonly property color muted: "#8fa9c2"
    readonly property color calm: "#7fd6d0"
    readonly property color warm: "#f2c879"
    readonly property color panelColor: "#d90a1626"

    readonly property real em: Math.max(10, Math.min(44, Math.min(width, height) / 50))
    readonly property real gap: em * 0.8
    readonly property bool wide: width > height * 1.2

    readonly property var buttonNames: ({
        [Qt.LeftButton]: "left",
        [Qt.RightButton]: "right",
        [Qt.MiddleButton]: "middle",
        [Qt.BackButton]: "back",
        [Qt.ForwardButton]: "forward"
    })
    // Names of the keys that have no character, by the first code of each run of codes.
    readonly property var keyRuns: [
        [Qt.Key_Escape, ["Escape", "Tab", "Backtab", "Backspace", "Return", "Enter", "Insert", "Delete",
            "Pause", "Print", "SysReq", "Clear"]],
        [Qt.Key_Home, ["Home", "End", "Left", "Up", "Right", "Down", "PageUp", "PageDown"]],
        [Qt.Key_Shift, ["Shift", "Control", "Meta", "Alt", "CapsLock", "NumLock", "ScrollLock"]],
        [Qt.Key_F1, Array.from({ length: 35 }, (_, i) => `F${i + 1}`)],
        [Qt.Key_Super_L, ["Super_L", "Super_R", "Menu"]],
        [Qt.Key_AltGr, ["AltGr"]]
    ]

    property var heldKeys: []
    property int wheelSteps: 0
    property int events: 0

    focus: true

    function buttonName(button: int): string {
        return root.buttonNames[button] ?? `button 0x${button.toString(16)}`;
    }

    function keyName(key: int): string {
        if (key === Qt.Key_Space)
            return "Space";
        if (key > Qt.Key_Space && key < Qt.Key_Escape)
            return String.fromCodePoint(key);
        const run = root.keyRuns.find(([first, names]) => key >= first && key < first + names.length);
        return run ? run[1][key - run[0]] : `0x${key.toString(16)}`;
    }

    // The text of a key with its control characters made visible.
    function quoted(text: string): string {
        return text === "" ? "" : JSON.stringify(text).replace("\u007f", "\\u007f");
    }

    function modifierNames(modifiers: int): string {
        const names = [[Qt.ControlModifier, "Ctrl"], [Qt.ShiftModifier, "Shift"], [Qt.AltModifier, "Alt"],
            [Qt.MetaModifier, "Meta"], [Qt.KeypadModifier, "Keypad"]];
        return names.filter(([flag, name]) => modifiers & flag).map(([flag, name]) => name).join("+");
    }

    function note(kind: string, what: string, detail: string): void {
        root.events += 1;
        log.insert(0, { number: root.events, kind: kind, what: what, detail: detail });
        if (log.count > 200)
            log.remove(200, log.count - 200);
    }

    function signed(value: real): string {
        return value > 0 ? `+${value}` : `${value}`;
    }

    function place(x: real, y: real): string {
        return `${Math.round(x)}, ${Math.round(y)}`;
    }

    function setKeyHeld(name: string, held: bool): void {
        const others = root.heldKeys.filter(other => other !== name);
        root.heldKeys = held ? [...others, name] : others;
    }

    function keyChanged(event: KeyEvent, down: bool): void {
        const name = root.keyName(event.key);
        const kind = !down ? "key up" : event.isAutoRepeat ? "key again" : "key down";
        const detail = [root.quoted(event.text), root.modifierNames(event.modifiers)];
        root.note(kind, name, detail.filter(part => part !== "").join("  "));
        root.setKeyHeld(name, down);
        event.accepted = true;
    }

    Keys.onPressed: event => root.keyChanged(event, true)
    Keys.onReleased: event => root.keyChanged(event, false)

    ListModel {
        id: log
    }

    FontLoader {
        id: mono

        source: "qrc:/Splash/assets/fonts/JetBrainsMono-Regular.ttf"
    }

    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0.0; color: "#0d2442" }
            GradientStop { position: 1.0; color: "#050d1b" }
        }
    }

    MouseArea {
        id: pointer

        property bool known: false

        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true
        onPositionChanged: mouse => {
            known = true;
            trail.draw(mouse.x, mouse.y);
        }
        onPressed: mouse => {
            known = true;
            root.note("press", root.buttonName(mouse.button), root.place(mouse.x, mouse.y));
            splash.at(mouse.x, mouse.y);
        }
        onReleased: mouse => {
            root.note("release", root.buttonName(mouse.button), root.place(mouse.x, mouse.y));
        }
        onWheel: wheel => {
            const angle = wheel.angleDelta.y;
            root.wheelSteps += Math.round(angle / 120);
            root.note("wheel", root.signed(angle), root.place(wheel.x, wheel.y));
        }
    }

    Rectangle {
        id: state

        x: root.gap
        y: root.gap
        width: root.wide ? Math.min(root.width * 0.44, root.em * 34) : root.width - 2 * x
        height: held.implicitHeight + 2 * root.em
        radius: root.em * 0.8
        color: root.panelColor

        ColumnLayout {
            id: held

            x: root.em
            y: root.em
            width: parent.width - 2 * x
            spacing: root.em * 0.6

            RowLayout {
                spacing: root.em * 0.4
                uniformCellSizes: true

                Repeater {
                    model: [Qt.LeftButton, Qt.MiddleButton, Qt.RightButton, Qt.BackButton, Qt.ForwardButton]

                    Lamp {
                        required property int modelData

                        Layout.fillWidth: true
                        text: root.buttonName(modelData)
                        lit: pointer.pressedButtons & modelData
                    }
                }
            }

            RowLayout {
                spacing: root.em

                Note {
                    text: `wheel ${root.signed(root.wheelSteps)}`
                }

                Note {
                    Layout.fillWidth: true
                    text: root.heldKeys.length > 0 ? root.heldKeys.join(" ") : "no key held"
                    color: root.heldKeys.length > 0 ? root.warm : root.muted
                    elide: Text.ElideRight
                }
            }
        }
    }

    Rectangle {
        readonly property real leftmost: state.x + state.width + root.gap

        x: root.wide ? Math.max(leftmost, root.width - root.gap - root.em * 30) : root.gap
        y: root.wide ? root.gap : state.y + state.height + root.gap
        width: root.width - x - root.gap
        height: root.height - y - root.gap
        radius: root.em * 0.8
        color: root.panelColor
        clip: true

        Note {
            anchors.centerIn: parent
            text: "move, click, turn the wheel, type"
            visible: log.count === 0
        }

        ListView {
            anchors.fill: parent
            anchors.margins: root.em
            // Wheel events are displayed, but not used.
            interactive: false
            clip: true
            model: log
            delegate: Entry {}
            add: Transition {
                NumberAnimation { property: "opacity"; from: 0; to: 1; duration: 150 }
            }
            displaced: Transition {
                NumberAnimation { property: "y"; duration: 120; easing.type: Easing.OutCubic }
                NumberAnimation { property: "opacity"; to: 1; duration: 120 }
            }
        }
    }

    // The trail is a ring of segments: each move reuses the oldest one, which then fades.
    Repeater {
        id: trail

        property int next: 0
        property point last: Qt.point(-1, -1)

        function draw(x: real, y: real): void {
            if (last.x >= 0) {
                (itemAt(next) as Segment).lay(last, Qt.point(x, y));
                next = (next + 1) % count;
            }
            last = Qt.point(x, y);
        }

        model: 120

        Segment {}
    }

    Rectangle {
        id: splash

        function at(x: real, y: real): void {
            splash.x = x - width / 2;
            splash.y = y - height / 2;
            spread.restart();
        }

        width: root.em * 5
        height: width
        radius: width / 2
        color: "transparent"
        border.color: root.warm
        border.width: Math.max(1, root.em * 0.15)
        opacity: 0

        ParallelAnimation {
            id: spread

            NumberAnimation { target: splash; property: "scale"; from: 0.2; to: 1; duration: 600 }
            NumberAnimation { target: splash; property: "opacity"; from: 1; to: 0; duration: 600 }
        }
    }

    Rectangle {
        x: Math.round(pointer.mouseX - width / 2)
        width: Math.max(1, Math.round(root.em / 12))
        height: root.height
        color: root.calm
        opacity: 0.45
        visible: pointer.known
    }

    Rectangle {
        y: Math.round(pointer.mouseY - height / 2)
        width: root.width
        height: Math.max(1, Math.round(root.em / 12))
        color: root.calm
        opacity: 0.45
        visible: pointer.known
    }

    Note {
        readonly property real reach: root.em * 0.8

        // On the other side of the crosshair if there is no room.
        readonly property bool toLeft: pointer.mouseX + reach + width > root.width
        readonly property bool below: pointer.mouseY - reach - height < 0

        x: toLeft ? pointer.mouseX - reach - width : pointer.mouseX + reach
        y: below ? pointer.mouseY + reach : pointer.mouseY - reach - height
        text: root.place(pointer.mouseX, pointer.mouseY)
        color: root.calm
        visible: pointer.known
    }

    component Note: Text {
        color: root.muted
        font.family: mono.font.family
        font.pixelSize: root.em
    }

    component Lamp: Rectangle {
        id: lamp

        required property string text
        required property bool lit

        implicitWidth: 1
        implicitHeight: root.em * 2
        radius: root.em * 0.5
        color: lit ? root.warm : "#1a3351"

        Note {
            anchors.fill: parent
            anchors.margins: root.em * 0.2
            text: lamp.text
            color: lamp.lit ? "#14233a" : root.muted
            fontSizeMode: Text.HorizontalFit
            minimumPixelSize: 7
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
        }
    }

    component Entry: RowLayout {
        id: entry

        required property int index
        required property int number
        required property string kind
        required property string what
        required property string detail

        width: ListView.view.width
        height: root.em * 1.5
        spacing: root.em * 0.7

        Note {
            Layout.preferredWidth: root.em * 2
            horizontalAlignment: Text.AlignRight
            text: entry.number
            color: "#5c7893"
        }

        Note {
            Layout.preferredWidth: root.em * 5.5
            text: entry.kind
        }

        Note {
            Layout.preferredWidth: root.em * 5
            text: entry.what
            elide: Text.ElideRight
            color: entry.kind.startsWith("key") ? root.warm : root.calm
        }

        Note {
            Layout.fillWidth: true
            text: entry.detail
            color: root.ivory
            elide: Text.ElideRight
        }
    }

    component Segment: Rectangle {
        id: segment

        // Places the segment between two points and starts to fade it.
        function lay(from: point, to: point): void {
            const length = Math.hypot(to.x - from.x, to.y - from.y);
            width = length + 1;
            x = (from.x + to.x - width) / 2;
            y = (from.y + to.y - height) / 2;
            rotation = Math.atan2(to.y - from.y, to.x - from.x) * 180 / Math.PI;
            fade.restart();
        }

        height: Math.max(2, root.em * 0.25)
        color: root.calm
        visible: fade.running
        antialiasing: true

        NumberAnimation on opacity {
            id: fade

            running: false
            from: 0.9
            to: 0
            duration: 1400
        }
    }
}
