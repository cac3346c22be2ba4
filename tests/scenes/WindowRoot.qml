import QtQuick

Window { }
