#pragma once

// Includes the whole interface. Needs only the standard library and the Vulkan headers.
#include <marlune/app.h>
#include <marlune/context_object_std.h>
#include <marlune/mcamera_view.h>
#include <marlune/mquick_view.h>
#include <marlune/mscreen_capture_view.h>
#include <marlune/mvideo_player_view.h>
#include <marlune/mview.h>
#include <marlune/mweb_view.h>
#include <marlune/options.h>
#include <marlune/qml_modules.h>
#include <marlune/values.h>
