#pragma once

/** What the start and the stop of the library ask of the web part. On the Qt thread. */
namespace marlune::web_part {

/** Registers the "res" scheme. Before initialize_engine(). */
void register_scheme();

/** Before the application object is made. */
void initialize_engine();

/** Configures the shared profile, with the handler of the "res" scheme. */
void set_up_profile();

/** True while a web view has a page. */
bool has_pages();

/**
 * Closes all pages that the host has left open. Call after the event loop has ended and before the
 * engine is stopped.
 */
void close_pages();

}  // namespace marlune::web_part
