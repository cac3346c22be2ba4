import QtQuick

NoSuchType { }
