#pragma once

#include "runtime/callback_slot.h"

#include <QString>

#include <cstdint>
#include <string>

class QObject;

/**
 * What the parts below the web part ask of it: the start sequence cannot be split, and any facade can
 * set what serves the "res" scheme. Implemented in src/web, so that nothing here includes upwards.
 */
namespace marlune::web_part {

/** Makes the "res" scheme known. Before initialize_engine(). */
void register_scheme();

/** Before the application object is made. */
void initialize_engine();

/** Takes and configures the shared profile and installs the scheme handler on it. */
void set_up_profile();

/** Whether a web view has a page. On the Qt thread. */
bool has_pages();

/** Ends all pages that the host has left open. After the event loop, before the engine is ended. */
void close_pages();

/** The one scheme handler, for calls that are carried to it; null before set_up_profile(). */
QObject* scheme_handler();

/** Where the function is that serves the "res" scheme's files. After set_up_profile(). */
CallbackSlot<uint8_t*(std::string path, bool& flag, uint64_t& size)>& resource_file();

/** The folder that the host has chosen for what web views store; empty by default. On the Qt thread. */
QString storage_path();

}  // namespace marlune::web_part
