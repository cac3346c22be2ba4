import QtQuick

// Compiles, and cannot be created: nobody gives the property a value.
Item {
    required property int demanded
}
