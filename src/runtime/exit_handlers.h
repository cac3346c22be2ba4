#pragma once

namespace marlune {

/** What a process that exits without M::destroy() calls; see platform::run_at_exit(). */
struct ExitHandlers {
    void (*leave)();
    void (*end)(int exit_code);
};

/** Once, before register_exit_handlers(). */
void set_exit_handlers(ExitHandlers handlers);

/**
 * Registers the handlers with the system. It runs them in the reverse order of registration, and
 * they must run before what they use is taken down, so they are registered again once more has been
 * set up, such as a graphics driver.
 */
void register_exit_handlers();

}  // namespace marlune
