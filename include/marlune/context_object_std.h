#pragma once

#include <marlune/export.h>
#include <marlune/values.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

/**
 * What a host publishes to pages and QML: objects with properties, methods and signals, described by
 * plain records. MWebView::webchannel_registerObject() publishes one.
 *
 * @code
 * using namespace marlune::db;
 * PropertyInfoStd health{.name = "health", .type = VariantTypeStd::INT, .value = ValueStd(100)};
 * MethodInfoStd heal{.name = "heal", .args = {{VariantTypeStd::INT, "points"}}};
 * heal.func_call_method = [](MethodInfoStd*, std::vector<ContainerStd> values, auto) { ... };
 * AbstractContextObjectStd player{.name = "player",
 *                                 .methods = {{"heal", &heal}},
 *                                 .properties = {{"health", &health}}};
 * view.webchannel_registerObject("player", &player);
 * ...
 * {
 *     const ValueLock lock;
 *     health.value = ValueStd(80);
 * }
 * health.func_valueChanged_updateQt(&health);   // tells the pages
 * @endcode
 *
 * **Lifetime.** The records are the host's. They must stay where they are, and keep their names, types
 * and members, from the registration until the object is withdrawn or its view is destroyed; after that
 * the callbacks that the library has filled in do nothing.
 *
 * **Threads.** The library calls the host's callbacks on the Qt thread. The callbacks that it fills in
 * may be called on any thread: they return at once, and what they tell happens in the order of the
 * calls. They are filled in at one moment, in webchannel_registerObject() or in the view's first load()
 * where that is later, under a ValueLock; a thread that may look at them then holds one to copy them, and
 * calls the copy without it. A record's value may be read and written by the Qt thread at any time; hold a ValueLock
 * while you read or write one on another thread.
 */
namespace marlune::db {

struct ArgumentInfoStd {
    VariantTypeStd type = VariantTypeStd::UNKNOWN;
    std::string name;
};

struct ReturnInfoStd {
    VariantTypeStd type = VariantTypeStd::NIL;
};

/** A method that pages call, or a signal that the host emits. Name in braces what it has, in this order. */
struct MethodInfoStd {
    std::string name;
    /** In the order of the call. A page must give as many. */
    std::vector<ArgumentInfoStd> args{};
    /** Absent means NIL: callers get no value. */
    std::optional<ReturnInfoStd> return_type{};
    bool is_signal = false;

    /**
     * The host's: serves a call, on the Qt thread, while the page waits for its result. `values` are
     * converted by the declared codes; `codes` are those, but an object or a list that a page gives for
     * a code that is no container comes as JSON text under DICTIONARY or ARRAY, from then on. A number
     * comes as double whatever its code. A result that does not fit `return_type` is an invalid value
     * to the page.
     */
    std::function<ContainerStd(MethodInfoStd* method, std::vector<ContainerStd> values,
                               std::vector<VariantTypeStd> codes)>
        func_call_method{};

    /**
     * Filled in by the library for a signal: emits it with these values, each converted by the code at
     * its place. For any thread; returns at once. Where 20,000 of the signal wait for the Qt thread, it
     * is dropped, with a warning.
     */
    std::function<void(const MethodInfoStd* signal, std::vector<ContainerStd> values,
                       std::vector<VariantTypeStd> codes)>
        func_emit_signal{};
};

struct PropertyInfoStd {
    std::string name;
    VariantTypeStd type = VariantTypeStd::UNKNOWN;
    /** The current value. See ValueLock. */
    ContainerStd value{};

    /** The host's: a page or QML has written a new value into the record. On the Qt thread. */
    std::function<void(PropertyInfoStd* property)> func_valueChanged_updateGodot{};

    /**
     * Filled in by the library: tells pages and QML that the value has changed. They get the value that
     * the record holds when the Qt thread gets to it. For any thread; returns at once.
     */
    std::function<void(const PropertyInfoStd* property)> func_valueChanged_updateQt{};
};

struct AbstractContextObjectStd {
    /** The name by which changes and signals name the object: the one that it is registered under. */
    std::string name;
    /** By name. */
    std::map<std::string, MethodInfoStd*> methods{};
    std::map<std::string, PropertyInfoStd*> properties{};
};

/**
 * Keeps the Qt thread from reading and writing the values of all records while it lives. Hold it for the
 * access alone: no call of the library meanwhile. A callback of the host on the Qt thread holds it too
 * where other threads of the host read or write the value.
 */
class MARLUNE_EXPORT ValueLock {
public:
    ValueLock();
    ~ValueLock();
    ValueLock(const ValueLock&) = delete;
    ValueLock& operator=(const ValueLock&) = delete;
};

}  // namespace marlune::db
