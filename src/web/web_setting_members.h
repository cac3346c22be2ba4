#pragma once

#include "marlune/web_settings.h"

// What WebView declares for each row of MARLUNE_WEB_SETTINGS. Qt's moc does not read templates, and
// must find the types of properties and signals in plain words.

#define MARLUNE_WEB_SETTING_TYPE_Bool bool
#define MARLUNE_WEB_SETTING_TYPE_Int int
#define MARLUNE_WEB_SETTING_TYPE_Text QString

#define MARLUNE_WEB_SETTING_PROPERTY(type, name, property, initial, constness)                  \
    Q_PROPERTY(MARLUNE_WEB_SETTING_TYPE_##type property READ get_##name WRITE set_##name NOTIFY \
                   property##Changed)

#define MARLUNE_WEB_SETTING_ACCESSORS(type, name, property, initial, constness) \
    MARLUNE_WEB_SETTING_TYPE_##type get_##name() const                          \
    {                                                                           \
        return property##_;                                                     \
    }                                                                           \
    void set_##name(MARLUNE_WEB_SETTING_TYPE_##type value)                      \
    {                                                                           \
        property##_ = value;                                                    \
        emit property##Changed(value);                                          \
    }

// Scenes can name a signal's parameter, so it is part of the interface.
#define MARLUNE_WEB_SETTING_SIGNAL(type, name, property, initial, constness) \
    void property##Changed(MARLUNE_WEB_SETTING_TYPE_##type status);

#define MARLUNE_WEB_SETTING_FIELD(type, name, property, initial, constness) \
    MARLUNE_WEB_SETTING_TYPE_##type property##_{initial};
