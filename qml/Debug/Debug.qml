pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts

/*!
    A panel of measurements over an otherwise transparent scene: frames per second, the time of each
    of the last 240 frames, and the hardware and versions used.

    A frame is counted when the window has finished it. Qt's animations run on a separate clock,
    whose ticks are shown separately: both values agree only while the host renders at the clock's
    rate.
*/
Item {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    // The view that shows this scene; null in a previewer.
    readonly property var host: typeof ctx === "undefined" ? null : ctx // qmllint disable unqualified
    readonly property string version: host?.version ?? "preview"

    readonly property color ivory: "#f6efdd"
    readonly property color muted: "#9db4ca"
    readonly property color calm: "#7fd6d0"
    readonly property color warn: "#f2c879"
    readonly property color alarm: "#ff8a6b"

    readonly property real em: Math.max(10, Math.min(48, Math.min(width, height) / 52))
    readonly property int history: 240
    readonly property int sweepGap: 4

    // Frames since this scene was created, and the times of the latest ones in ms.
    property int frames: 0
    property var times: []
    property real lastFrame: 0

    // The values that the panel shows, updated a few times a second to stay readable.
    property real rate: 0
    property real tickRate: 0
    property string gpuName: ""
    property var summary: ({ min: 0, avg: 0, p99: 0, max: 0 })
    property real ceiling: 40

    property int windowFrames: 0
    property int windowTicks: 0
    property real windowStart: 0

    focus: true

    function frameColor(ms: real): color {
        if (ms <= 21)
            return root.calm;
        return ms <= 42 ? root.warn : root.alarm;
    }

    function countFrame(): void {
        const now = Date.now();
        if (root.lastFrame > 0)
            root.record(now - root.lastFrame);
        root.lastFrame = now;
        root.frames += 1;
    }

    // The graph is drawn as on an oscilloscope: a new time replaces the oldest bar, behind a moving
    // gap, so that a frame changes two bars and not all of them.
    function record(ms: real): void {
        const slot = root.frames % root.history;
        root.times[slot] = ms;
        (bars.itemAt(slot) as Bar).ms = ms;
        (bars.itemAt((slot + root.sweepGap) % root.history) as Bar).ms = 0;
    }

    function summarize(): void {
        const sorted = root.times.filter(ms => ms !== undefined).sort((a, b) => a - b);
        if (sorted.length === 0)
            return;
        const sum = sorted.reduce((total, ms) => total + ms, 0);
        root.summary = {
            min: sorted[0],
            avg: sum / sorted.length,
            p99: sorted[Math.ceil(sorted.length * 0.99) - 1],
            max: sorted[sorted.length - 1]
        };
        root.ceiling = Math.max(40, Math.min(250, root.summary.max * 1.15));
    }

    function measure(): void {
        const now = Date.now();
        const rendered = root.host?.framesRendered ?? root.frames;
        const seconds = (now - root.windowStart) / 1000;
        if (root.windowStart > 0 && seconds > 0) {
            root.rate = (rendered - root.windowFrames) / seconds;
            root.tickRate = (clock.currentFrame - root.windowTicks) / seconds;
        }
        root.windowStart = now;
        root.windowFrames = rendered;
        root.windowTicks = clock.currentFrame;
        root.gpuName = root.host?.gpuName ?? "";
        root.summarize();
    }

    Connections {
        target: root.Window.window

        function onAfterFrameEnd(): void {
            root.countFrame();
        }
    }

    FrameAnimation {
        id: clock

        running: true
    }

    Timer {
        interval: 500
        running: true
        repeat: true
        triggeredOnStart: true
        onTriggered: root.measure()
    }

    FontLoader {
        id: mono

        source: "qrc:/Splash/assets/fonts/JetBrainsMono-Regular.ttf"
    }

    Rectangle {
        id: panel

        x: Math.min(root.em * 1.5, (root.width - width) / 2)
        y: x
        width: Math.min(root.width - 12, root.em * 36)
        height: Math.min(root.height - 2 * y, content.implicitHeight + 2 * content.anchors.margins)
        radius: root.em * 0.9
        color: "#e60a1626"
        border.color: "#337fa9d6"

        ColumnLayout {
            id: content

            anchors.fill: parent
            anchors.margins: root.em * 1.2
            spacing: root.em * 0.8

            RowLayout {
                spacing: root.em * 0.5

                Label {
                    text: root.rate.toFixed(1)
                    color: root.frameColor(1000 / Math.max(1, root.rate))
                    font.pixelSize: root.em * 2.8
                }

                Label {
                    Layout.alignment: Qt.AlignBaseline
                    text: "fps"
                }

                Label {
                    Layout.fillWidth: true
                    Layout.alignment: Qt.AlignBaseline
                    horizontalAlignment: Text.AlignRight
                    text: "frame"
                }

                Label {
                    Layout.alignment: Qt.AlignBaseline
                    text: root.frames
                    color: root.ivory
                }
            }

            Item {
                id: graph

                // The names of the lines are in the margin.
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.rightMargin: root.em * 2.6
                Layout.preferredHeight: root.em * 7

                Repeater {
                    // The frame times at 60 and at 30 frames per second.
                    model: [1000 / 60, 1000 / 30]

                    Rectangle {
                        id: line

                        required property real modelData

                        y: Math.round(graph.height * (1 - modelData / root.ceiling))
                        width: graph.width
                        height: 1
                        color: "#407fa9d6"

                        Label {
                            anchors.left: parent.right
                            anchors.leftMargin: root.em * 0.4
                            anchors.verticalCenter: parent.verticalCenter
                            text: line.modelData.toFixed(1)
                            // The two would overlap once a slow frame has stretched the scale.
                            visible: line.modelData > 20
                                || graph.height * line.modelData > height * root.ceiling
                            font.pixelSize: Math.max(8, root.em * 0.8)
                        }
                    }
                }

                Repeater {
                    id: bars

                    model: root.history

                    Bar {}
                }
            }

            RowLayout {
                Layout.fillWidth: true
                spacing: root.em * 0.5
                uniformCellSizes: true

                Figure { name: "min"; ms: root.summary.min }
                Figure { name: "avg"; ms: root.summary.avg }
                Figure { name: "99 %"; ms: root.summary.p99 }
                Figure { name: "max"; ms: root.summary.max }
            }

            Rectangle {
                Layout.fillWidth: true
                implicitHeight: 1
                color: "#337fa9d6"
            }

            GridLayout {
                Layout.fillWidth: true
                columns: 2
                columnSpacing: root.em * 1.2
                rowSpacing: root.em * 0.35

                Label { text: "scene" }
                Value { text: `${root.width} × ${root.height}` }
                Label { text: "gpu" }
                Value { text: root.gpuName || "…" }
                Label { text: "animation" }
                Value { text: `${root.tickRate.toFixed(1)} ticks/s` }
                Label { text: "marlune" }
                Value { text: root.version }
            }
        }
    }

    component Label: Text {
        color: root.muted
        font.family: mono.font.family
        font.pixelSize: root.em
    }

    component Value: Label {
        Layout.fillWidth: true
        color: root.ivory
        elide: Text.ElideRight
    }

    component Figure: ColumnLayout {
        id: figure

        required property string name
        required property real ms

        spacing: 0

        Label {
            text: figure.name
            font.pixelSize: Math.max(9, root.em * 0.85)
        }

        Label {
            Layout.fillWidth: true
            text: `${figure.ms.toFixed(1)} ms`
            color: root.frameColor(figure.ms)
        }
    }

    component Bar: Rectangle {
        required property int index
        property real ms: 0

        x: index * graph.width / root.history
        y: graph.height - height
        width: graph.width / root.history
        height: graph.height * Math.min(1, ms / root.ceiling)
        color: root.frameColor(ms)
    }
}
