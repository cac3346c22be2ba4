#pragma once

// The host's whole view of the library. Needs the standard library and the Vulkan headers only.
#include <marlune/app.h>
#include <marlune/camera_view.h>
#include <marlune/context_object.h>
#include <marlune/options.h>
#include <marlune/qml_modules.h>
#include <marlune/quick_view.h>
#include <marlune/screen_capture_view.h>
#include <marlune/values.h>
#include <marlune/video_player_view.h>
#include <marlune/view.h>
#include <marlune/web_view.h>
