import QtQuick
import No.Such.Module

Item { }
