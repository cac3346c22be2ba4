#pragma once

/** How the library ends: by M::destroy(), or with a process whose host does not call it. */
namespace marlune::shutdown {

/** Has the library end with the process, and stay loaded until then. Repeated calls do nothing. */
void prepare_process();

/** Ends the library on the Qt thread, once its event loop has ended. */
void stop();

/** What M::destroy() does on any other thread: has the event loop end, and waits for that. */
void request_and_wait();

}  // namespace marlune::shutdown
