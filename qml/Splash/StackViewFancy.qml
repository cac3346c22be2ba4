pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import QtQuick.Shapes

/*!
    A stack of pages with animated transitions.

    One page deeper: Right, Down, Return, Space, a click, the wheel, or the button at the right.
    One page back: Left, Up, Escape, Backspace, the mouse's right or back button, or the button at
    the left. The digits and the dots go straight to a page, and T changes the transition.
*/
Item {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    // The pages in the order in which they are stacked. To show others, replace them before the
    // scene is created; a page fills the view and lays itself out.
    property list<Component> pages: [phasesPage, tidePage, starsPage]
    readonly property list<string> motions: ["slide", "depth", "fade"]
    // One of `motions`: the transition between pages.
    property string motion: "slide"
    // The number of pages on the stack, at least one.
    readonly property int depth: stack.depth

    readonly property color night: "#071327"
    readonly property color ivory: "#f6efdd"
    readonly property color foam: "#a9c6dd"
    readonly property color calm: "#7fd6d0"
    readonly property color dim: "#2b4c70"

    readonly property real em: Math.max(10, Math.min(width, height) / 34)

    focus: true
    clip: true

    // Stacks any page, even one that is not in `pages`.
    function push(page: Component): void {
        stack.push(page);
    }

    function pushNext(): void {
        if (root.depth < root.pages.length)
            stack.push(root.pages[root.depth]);
    }

    // The first page stays.
    function pop(): void {
        if (root.depth > 1)
            stack.pop();
    }

    // Pops or pushes, with a single transition, until that many pages are stacked.
    function goTo(depth: int): void {
        if (depth < 1 || depth > root.pages.length || depth === root.depth)
            return;
        if (depth < root.depth)
            stack.pop(stack.get(depth - 1));
        else
            stack.push([...root.pages].slice(root.depth, depth));
    }

    function nextMotion(): void {
        root.motion = root.motions[(root.motions.indexOf(root.motion) + 1) % root.motions.length];
    }

    function handleKey(key: int): bool {
        if (key >= Qt.Key_1 && key <= Qt.Key_9)
            root.goTo(key - Qt.Key_0);
        else if ([Qt.Key_Right, Qt.Key_Down, Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space].includes(key))
            root.pushNext();
        else if ([Qt.Key_Left, Qt.Key_Up, Qt.Key_Escape, Qt.Key_Backspace, Qt.Key_Back].includes(key))
            root.pop();
        else if (key === Qt.Key_T)
            root.nextMotion();
        else
            return false;
        return true;
    }

    Keys.onPressed: event => event.accepted = root.handleKey(event.key)

    FontLoader {
        id: mono

        source: "qrc:/Splash/assets/fonts/JetBrainsMono-Regular.ttf"
    }

    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0.0; color: "#12345a" }
            GradientStop { position: 1.0; color: root.night }
        }
    }

    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.LeftButton | Qt.RightButton | Qt.BackButton | Qt.ForwardButton
        onClicked: mouse => {
            [Qt.RightButton, Qt.BackButton].includes(mouse.button) ? root.pop() : root.pushNext();
        }
        onWheel: wheel => {
            if (!stack.busy)
                wheel.angleDelta.y < 0 ? root.pushNext() : root.pop();
        }
    }

    StackView {
        id: stack

        anchors.fill: parent
        anchors.bottomMargin: bar.height + root.em
        initialItem: root.pages[0]
        pushEnter: Glide { entering: true; side: 1 }
        pushExit: Glide { entering: false; side: -1 }
        popEnter: Glide { entering: true; side: -1 }
        popExit: Glide { entering: false; side: 1 }
    }

    RowLayout {
        anchors.top: parent.top
        anchors.right: parent.right
        anchors.margins: root.em * 1.2
        spacing: root.em * 0.3

        Repeater {
            model: root.motions

            Pill {
                required property string modelData

                text: modelData
                checked: root.motion === modelData
                onClicked: root.motion = modelData
            }
        }
    }

    RowLayout {
        id: bar

        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottomMargin: root.em
        spacing: root.em * 0.6

        Pill {
            text: "←"
            enabled: root.depth > 1
            onClicked: root.pop()
        }

        Repeater {
            model: Math.max(root.pages.length, root.depth)

            AbstractButton {
                id: dot

                required property int index

                readonly property bool current: index === root.depth - 1

                implicitWidth: root.em * (current ? 2.2 : 0.8)
                implicitHeight: root.em * 2
                focusPolicy: Qt.NoFocus
                background: Item {
                    Rectangle {
                        anchors.centerIn: parent
                        width: parent.width
                        height: root.em * 0.8
                        radius: height / 2
                        color: dot.current ? root.ivory : dot.index < root.depth ? root.calm : root.dim
                    }
                }
                onClicked: root.goTo(index + 1)
            }
        }

        Pill {
            text: "→"
            enabled: root.depth < root.pages.length
            onClicked: root.pushNext()
        }
    }

    // --- pages ---------------------------------------------------------------------------------

    Component {
        id: phasesPage

        Sheet {
            id: phases

            title: "Phases"
            note: "click, wheel, arrows; T for the motion"

            Repeater {
                model: 7

                Moon {
                    required property int index

                    readonly property real near: 1 - Math.abs(index - 3) / 3

                    phase: (index + 1) / 8
                    size: Math.min(phases.area.width / 7.4, phases.area.height) * (0.6 + 0.42 * near)
                    x: phases.area.x + phases.area.width * (index + 0.5) / 7
                    y: phases.area.y + phases.area.height * (0.6 - 0.16 * near)
                }
            }
        }
    }

    Component {
        id: tidePage

        Sheet {
            id: tide

            property real hour

            title: "Tide"
            note: `${Math.floor(hour)} h, the water ${level(hour + 0.1) > level(hour) ? "rises" : "falls"}`

            // The water's height at an hour of the day, from -1 to 1.
            function level(hour: real): real {
                return 0.8 * Math.sin(hour * Math.PI / 6) + 0.2 * Math.sin(hour * Math.PI / 12 + 1);
            }

            function place(hour: real): point {
                return Qt.point(area.x + area.width * hour / 24,
                    area.y + area.height * (0.5 - 0.45 * level(hour)));
            }

            NumberAnimation on hour {
                from: 0
                to: 24
                duration: 24000
                loops: Animation.Infinite
            }

            Line {
                points: Array.from({ length: 97 }, (_, i) => tide.place(i / 4))
            }

            Star {
                place: tide.place(tide.hour)
                size: root.em * 1.4
            }
        }
    }

    Component {
        id: starsPage

        Sheet {
            id: stars

            // The seven stars in the order in which a line joins them, back to the bowl.
            readonly property list<point> places: [[0.04, 0.28], [0.2, 0.14], [0.34, 0.3], [0.5, 0.42],
                [0.56, 0.84], [0.88, 0.9], [0.95, 0.44], [0.5, 0.42]]
                .map(([x, y]) => Qt.point(area.x + x * area.width, area.y + y * area.height))

            title: "Stars"
            note: "the Great Bear"

            Line {
                points: stars.places
            }

            Repeater {
                model: 7

                Star {
                    required property int index

                    place: stars.places[index]
                    size: root.em * (index === 3 ? 0.6 : 1)
                }
            }
        }
    }

    // --- parts ---------------------------------------------------------------------------------

    // How one page moves when another one comes or goes.
    component Glide: Transition {
        id: glide

        required property bool entering
        // Where the page is while it is not shown: 1 to the right and near, -1 to the left and far.
        required property int side
        readonly property real shift: root.motion === "slide" ? side * stack.width : 0
        readonly property real zoom: root.motion === "depth" ? 1 + side * 0.35 : 1

        Step { property: "x"; from: glide.entering ? glide.shift : 0; to: glide.entering ? 0 : glide.shift }
        Step { property: "scale"; from: glide.entering ? glide.zoom : 1; to: glide.entering ? 1 : glide.zoom }
        Step { property: "opacity"; from: glide.entering ? 0 : 1; to: glide.entering ? 1 : 0 }
    }

    component Step: NumberAnimation {
        duration: 420
        easing.type: Easing.InOutCubic
    }

    component Words: Text {
        color: root.foam
        font.family: mono.font.family
        font.pixelSize: root.em
    }

    component Sheet: Item {
        id: page

        required property string title
        required property string note
        // The area for the page's own content.
        readonly property rect area: Qt.rect(root.em * 2, root.em * 7, width - root.em * 4,
            height - root.em * 8)

        Words {
            x: root.em * 1.4
            y: root.em * 1.2
            text: page.title
            color: root.ivory
            font.pixelSize: root.em * 2
        }

        Words {
            x: root.em * 1.4
            y: root.em * 4
            width: page.width - 2 * x
            text: page.note
            elide: Text.ElideRight
        }
    }

    component Pill: AbstractButton {
        id: pill

        implicitWidth: Math.max(implicitHeight, label.implicitWidth + root.em * 1.2)
        implicitHeight: root.em * 1.9
        opacity: enabled ? 1 : 0.35
        // The stack keeps the keyboard focus.
        focusPolicy: Qt.NoFocus
        background: Rectangle {
            radius: height / 2
            color: pill.checked || pill.down ? root.ivory : pill.hovered ? "#3f6b96" : root.dim
        }
        contentItem: Words {
            id: label

            text: pill.text
            color: pill.checked || pill.down ? root.night : root.ivory
            font.pixelSize: Math.max(9, root.em * 0.85)
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
        }
    }

    component Line: Shape {
        id: line

        required property list<point> points

        preferredRendererType: Shape.CurveRenderer

        ShapePath {
            strokeColor: root.calm
            strokeWidth: Math.max(1, root.em * 0.12)
            fillColor: "transparent"

            PathPolyline { path: line.points }
        }
    }

    component Star: Rectangle {
        required property point place
        required property real size

        x: place.x - size / 2
        y: place.y - size / 2
        width: size
        height: size
        radius: size / 2
        color: root.ivory
    }

    // The moon at a phase from 0 (new) over 0.5 (full) to 1, around the item's own position.
    component Moon: Shape {
        id: moon

        required property real phase
        required property real size
        // The side of the light, 1 at the right.
        readonly property int side: phase <= 0.5 ? 1 : -1
        // How far the edge of the light bulges to that side; a negative value, to the other.
        readonly property real bulge: Math.cos(2 * Math.PI * phase)

        // A point of a half ellipse from the moon's top (0) to its bottom (1).
        function limb(width: real, along: real): point {
            const angle = Math.PI * (along - 0.5);
            return Qt.point(size / 2 * width * Math.cos(angle), size / 2 * Math.sin(angle));
        }

        preferredRendererType: Shape.CurveRenderer

        Star {
            z: -1
            place: Qt.point(0, 0)
            size: moon.size
            color: "#1c3b60"
        }

        ShapePath {
            strokeWidth: -1
            fillColor: root.ivory

            PathPolyline {
                readonly property real left: Math.min(moon.side, moon.side * moon.bulge)
                readonly property real right: Math.max(moon.side, moon.side * moon.bulge)

                // Down at the left and up at the right: the other way round, the renderer takes the
                // inside of a crescent for its outside.
                path: Array.from({ length: 80 }, (_, i) => i < 40 ? moon.limb(left, i / 40)
                    : moon.limb(right, 2 - i / 40))
            }
        }
    }
}
