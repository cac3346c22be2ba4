pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Shapes

/*!
    The start screen: a moon that rises over a calm night sea, the project's name afloat on the
    horizon, the library's version, and the two images of the footer.
*/
Item {
    id: root

    signal javaScriptConsoleMessage(int level, string message, int lineNumber, string sourceID)

    // The view that shows this scene; null in a previewer.
    readonly property var host: typeof ctx === "undefined" ? null : ctx // qmllint disable unqualified
    readonly property string version: host?.version ?? "preview"

    readonly property color night: "#040a17"
    readonly property color ivory: "#f6efdd"
    readonly property color foam: "#a9c6dd"

    readonly property real em: Math.min(width * 0.15, height * 0.17)
    readonly property real horizon: Math.round(height * 0.64)
    readonly property real margin: Math.max(10, Math.min(width, height) * 0.045)

    // One slow clock drives every swaying item. The items multiply it by whole numbers, so that
    // nothing jumps when it restarts.
    property real phase
    // The progress of the opening: 0 with the moon still in the sea, 1 when everything is in place.
    property real dawn

    focus: true
    clip: true

    function mix(from: real, to: real, amount: real): real {
        return from + (to - from) * Math.max(0, Math.min(1, amount));
    }

    // Returns the same pseudo-random values from 0 to 1 on every run.
    function scatter(seed: real): real {
        const value = Math.sin(seed * 12.9898) * 43758.5453;
        return value - Math.floor(value);
    }

    function veil(tint: color, alpha: real): color {
        return Qt.rgba(tint.r, tint.g, tint.b, alpha);
    }

    FontLoader {
        id: mono

        source: "qrc:/Splash/assets/fonts/JetBrainsMono-Regular.ttf"
    }

    NumberAnimation on phase {
        from: 0
        to: 2 * Math.PI
        duration: 24000
        loops: Animation.Infinite
    }

    NumberAnimation on dawn {
        from: 0
        to: 1
        duration: 2600
        easing.type: Easing.OutCubic
    }

    // --- sky -----------------------------------------------------------------------------------

    Rectangle {
        width: root.width
        height: root.horizon + 1
        gradient: Gradient {
            GradientStop { position: 0.0; color: root.night }
            GradientStop { position: 0.5; color: "#0a1a34" }
            GradientStop { position: 0.85; color: "#15395c" }
            GradientStop { position: 1.0; color: "#2d6482" }
        }
    }

    Repeater {
        model: 84

        Rectangle {
            required property int index

            readonly property real size: root.mix(0.8, 3.2, Math.pow(root.scatter(index + 0.3), 4))
                * Math.max(1, root.em / 110)

            x: root.scatter(index) * root.width
            y: Math.pow(root.scatter(index + 0.7), 1.3) * root.horizon * 0.94
            width: size
            height: size
            radius: size / 2
            // The twinkle is in the colour, not in the opacity: all stars stay one draw call.
            color: root.veil(index % 5 === 0 ? "#ffe6c4" : "#dfeaff", root.mix(0.9, 0.25, y / root.horizon)
                * root.mix(0.35, 1, 0.5 + 0.5 * Math.sin((2 + index % 7) * root.phase + index)))
        }
    }

    Moon {
        id: moon

        diameter: root.em * 1.7
        x: root.width / 2 - width / 2
        y: root.mix(root.horizon + diameter * 0.12, root.horizon * 0.36, root.dawn) - height / 2
    }

    // --- sea -----------------------------------------------------------------------------------

    Rectangle {
        y: root.horizon
        width: root.width
        height: (root.height - y) * 0.2
        gradient: Gradient {
            GradientStop { position: 0.0; color: "#1d4a69" }
            GradientStop { position: 1.0; color: "#12334f" }
        }
    }

    Streak {
        y: root.horizon
        width: root.width
        height: Math.max(1, root.em * 0.012)
        brightness: 0.65
    }

    Wave { level: 0.12; swell: 0.018; span: 2.2; tint: "#163d5a"; period: 15000 }
    Wave { level: 0.28; swell: 0.045; span: 3.4; tint: "#123855"; period: 17000 }
    Wave { level: 0.46; swell: 0.065; span: 4.6; tint: "#0d2d4a"; period: -14000 }

    // The moon's path on the water: streaks that widen towards the shore, each with its own sway.
    Repeater {
        id: glitter

        model: 16

        Streak {
            required property int index

            readonly property real nearness: (index + 0.5) / glitter.count
            readonly property real sway: Math.sin((5 + index % 4) * root.phase + index * 2.3)

            x: moon.x + (moon.width - width) / 2 + sway * moon.diameter * root.mix(0.02, 0.16, nearness)
            y: root.horizon + Math.pow(nearness, 1.4) * 0.5 * (root.height - root.horizon)
            width: moon.diameter * (root.mix(0.5, 1.2, nearness)
                + 0.28 * Math.sin((7 + index % 3) * root.phase - index * 1.3))
            height: Math.max(1, root.mix(0.016, 0.06, nearness) * root.em)
            radius: height / 2
            brightness: root.dawn * root.mix(0.75, 0.12, nearness)
        }
    }

    Wave { level: 0.64; swell: 0.085; span: 5.8; tint: "#09203b"; period: 19000 }
    Wave { level: 0.80; swell: 0.075; span: 7.2; tint: "#051328"; period: -23000 }

    // --- text ----------------------------------------------------------------------------------

    Row {
        id: title

        readonly property string name: "marlune"

        anchors.horizontalCenter: parent.horizontalCenter
        y: root.horizon - height * 0.94
        spacing: root.em * 0.09

        Repeater {
            model: title.name.length

            Text {
                id: letter

                required property int index

                readonly property real arrival: root.mix(0, 1, (root.dawn - 0.6 - index * 0.03) * 5)

                text: title.name[index]
                color: root.ivory
                opacity: arrival
                font.family: mono.font.family
                font.pixelSize: root.em
                // Curves stay sharp while the letters float by fractions of a pixel.
                renderType: Text.CurveRendering
                transform: Translate {
                    y: root.em * ((1 - letter.arrival) * 0.35
                        + Math.sin(6 * root.phase - letter.index * 0.7) * 0.025)
                }
            }
        }
    }

    Text {
        anchors.horizontalCenter: parent.horizontalCenter
        y: emblem.y - root.em * 0.1 - height
        width: Math.min(implicitWidth, root.width - 2 * root.margin)
        text: root.version
        color: root.foam
        opacity: emblem.opacity
        elide: Text.ElideRight
        font.family: mono.font.family
        font.pixelSize: Math.max(10, root.em * 0.18)
    }

    FooterImage {
        id: emblem

        anchors.left: parent.left
        source: "qrc:/Splash/assets/images/emblem.png"
        height: Math.max(26, root.em * 0.5)
    }

    FooterImage {
        anchors.right: parent.right
        source: "qrc:/Splash/assets/images/rendered_with.png"
        height: Math.max(16, root.em * 0.24)
    }

    // --- parts ---------------------------------------------------------------------------------

    component FooterImage: Image {
        anchors.bottom: parent.bottom
        anchors.margins: root.margin
        width: height * implicitWidth / Math.max(1, implicitHeight)
        opacity: Math.max(0, (root.dawn - 0.8) * 5)
        mipmap: true
        // Not cached: the image is shown once, and Qt's cache would keep a timer running after the
        // scene's end.
        cache: false
    }

    // A line of moonlight that fades towards both ends.
    component Streak: Rectangle {
        id: streak

        required property real brightness

        gradient: Gradient {
            orientation: Gradient.Horizontal

            GradientStop { position: 0.0; color: root.veil(root.ivory, 0) }
            GradientStop { position: 0.5; color: root.veil(root.ivory, streak.brightness) }
            GradientStop { position: 1.0; color: root.veil(root.ivory, 0) }
        }
    }

    // A full moon with its halo. It never changes, so it is drawn once into a layer.
    component Moon: Item {
        id: disc

        required property real diameter

        width: diameter * 2.8
        height: width
        layer.enabled: true
        layer.smooth: true

        Ball {
            // The halo, which begins at the disc's edge.
            radius: disc.width / 2
            fillGradient: RadialGradient {
                centerX: disc.width / 2
                centerY: centerX
                centerRadius: disc.width / 2
                focalX: centerX
                focalY: centerY

                GradientStop { position: 0.34; color: "#98cfe0fa" }
                GradientStop { position: 0.46; color: "#56b2cbee" }
                GradientStop { position: 0.62; color: "#2a9dbde6" }
                GradientStop { position: 0.8; color: "#0e8fb4e0" }
                GradientStop { position: 1.0; color: "#0087afdc" }
            }
        }

        Ball {
            radius: disc.diameter / 2
            fillGradient: RadialGradient {
                centerX: disc.width / 2 - disc.diameter * 0.12
                centerY: disc.width / 2 - disc.diameter * 0.16
                centerRadius: disc.diameter * 0.7
                focalX: centerX
                focalY: centerY

                GradientStop { position: 0.0; color: "#fffaf0" }
                GradientStop { position: 0.6; color: root.ivory }
                GradientStop { position: 1.0; color: "#d3c6a8" }
            }
        }

        Repeater {
            // Centre and diameter of each sea, in diameters of the moon.
            model: [[-0.17, -0.16, 0.25], [0.05, -0.24, 0.17], [0.16, -0.08, 0.21], [0.06, 0.05, 0.12],
                [-0.22, 0.1, 0.14], [-0.06, 0.24, 0.09], [0.26, 0.14, 0.08]]

            Rectangle {
                required property var modelData

                x: (disc.width - width) / 2 + modelData[0] * disc.diameter
                y: (disc.height - height) / 2 + modelData[1] * disc.diameter
                width: modelData[2] * disc.diameter
                height: width
                radius: width / 2
                color: "#24a08f74"
            }
        }
    }

    component Ball: Shape {
        id: ball

        required property real radius
        property alias fillGradient: outline.fillGradient

        anchors.fill: parent
        preferredRendererType: Shape.CurveRenderer

        ShapePath {
            id: outline

            strokeWidth: -1

            PathAngleArc {
                centerX: ball.width / 2
                centerY: ball.height / 2
                radiusX: ball.radius
                radiusY: ball.radius
                sweepAngle: 360
            }
        }
    }

    // One layer of waves: a crest above a body of the same colour. The crest's shape never changes.
    // It is wider than the scene and slides by one span, which loops without a seam.
    component Wave: Item {
        id: wave

        // The position on the sea, from 0 at the horizon to 1 at the shore.
        required property real level
        // Half the height of its crests and the distance between them, in em.
        required property real swell
        required property real span
        required property color tint
        // Milliseconds for one span; a negative period runs to the left.
        required property int period

        readonly property real length: Math.max(1, root.em * span)
        readonly property real amplitude: root.em * swell
        readonly property real line: Math.max(1, root.em * 0.014)
        readonly property int halves: Math.min(200, 2 * Math.ceil(root.width / length) + 6)

        y: root.horizon + level * (root.height - root.horizon)
            + Math.sin(4 * root.phase + level * 9) * amplitude * 0.35

        Shape {
            id: crest

            property real slide

            x: (slide - 2) * wave.length
            preferredRendererType: Shape.CurveRenderer

            NumberAnimation on slide {
                from: wave.period > 0 ? 0 : 1
                to: 1 - from
                duration: Math.abs(wave.period)
                loops: Animation.Infinite
            }

            ShapePath {
                strokeWidth: wave.line
                strokeColor: Qt.tint(wave.tint, root.veil(root.foam, 0.22))
                fillColor: wave.tint

                PathSvg {
                    path: `M0 0q${wave.length / 4} ${-2 * wave.amplitude} ${wave.length / 2} 0`
                        + `t${wave.length / 2} 0`.repeat(wave.halves - 1)
                        + `v${wave.amplitude + 4 * wave.line}h${-wave.halves * wave.length / 2}z`
                }
            }
        }

        // Drawn after the crest, whose lower edge it hides.
        Rectangle {
            y: wave.amplitude + wave.line
            width: root.width
            height: root.height - wave.y - y
            color: wave.tint
        }
    }
}
