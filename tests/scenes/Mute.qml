import QtQuick

// Lacks the signal that the library connects to.
Rectangle {
    color: "#0000ff"
}
