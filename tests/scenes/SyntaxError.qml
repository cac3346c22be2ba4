import QtQuick

Item {
    width: ]
}
