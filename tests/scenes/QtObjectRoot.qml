import QtQml

QtObject { }
