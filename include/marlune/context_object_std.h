#pragma once

#include <marlune/export.h>
#include <marlune/values.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

/**
 * The records with which a host describes the objects that it publishes to pages and QML: their
 * properties, methods and signals. MWebView::webchannel_registerObject() publishes an object.
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
 * health.func_valueChanged_updateQt(&health);   // notifies the pages
 * @endcode
 *
 * **Lifetime.** The host owns the records. They must keep their addresses, names, types and members
 * from the registration until the object is withdrawn or its view is destroyed. After that, the
 * callbacks that the library has filled in do nothing.
 *
 * **Threads.** The library calls the host's callbacks on the Qt thread. The callbacks that the
 * library fills in may be called on any thread: they return at once, and the Qt thread handles the
 * calls in the order in which they were made. The library fills them in once, under a ValueLock: in
 * webchannel_registerObject(), or in the view's first load() if that comes later. A thread that may
 * access these callbacks at that moment must hold a ValueLock while it copies them, and call the
 * copies without the lock. The Qt thread may read and write a record's value at any time: every
 * other thread must hold a ValueLock while it reads or writes a value.
 */
namespace marlune::db {

/** An argument of a method or of a signal. */
struct ArgumentInfoStd {
    VariantTypeStd type = VariantTypeStd::UNKNOWN;
    std::string name;
};

/** The result of a method. */
struct ReturnInfoStd {
    VariantTypeStd type = VariantTypeStd::NIL;
};

/**
 * A method that pages call, or a signal that the host emits. Initialise it with designated
 * initialisers, in the order of the members.
 */
struct MethodInfoStd {
    std::string name;
    /** The arguments, in the order of the call. A page must pass exactly as many. */
    std::vector<ArgumentInfoStd> args{};
    /** Without a value: NIL, so that callers get no result. */
    std::optional<ReturnInfoStd> return_type{};
    bool is_signal = false;

    /**
     * Set by the host: runs the method. The library calls it on the Qt thread while the page waits
     * for the result. `values` are converted by the declared type codes, and `codes` are those
     * codes. There are two exceptions. An object or a list that a page passes for a code other than
     * DICTIONARY or ARRAY arrives as JSON text with one of these two codes, in this call and in
     * later ones. A number arrives as double, whatever its code. If the result does not match
     * `return_type`, the page gets an invalid value.
     */
    std::function<ContainerStd(MethodInfoStd* method, std::vector<ContainerStd> values,
                               std::vector<VariantTypeStd> codes)>
        func_call_method{};

    /**
     * Filled in by the library, for a signal: emits the signal with these values, each converted by
     * the code at the same index. May be called on any thread; does not block. If 20,000 emissions
     * of the signal are already waiting for the Qt thread, the library drops this one and logs a
     * warning.
     */
    std::function<void(const MethodInfoStd* signal, std::vector<ContainerStd> values,
                       std::vector<VariantTypeStd> codes)>
        func_emit_signal{};
};

/** A property that pages and QML read, write and observe. */
struct PropertyInfoStd {
    std::string name;
    VariantTypeStd type = VariantTypeStd::UNKNOWN;
    /** The current value. Protected by ValueLock. */
    ContainerStd value{};

    /**
     * Set by the host: the library calls it on the Qt thread after a page or QML has written a new
     * value into the record.
     */
    std::function<void(PropertyInfoStd* property)> func_valueChanged_updateGodot{};

    /**
     * Filled in by the library: notifies pages and QML that the value has changed. They get the
     * value that the record holds when the Qt thread handles the notification. May be called on any
     * thread; does not block.
     */
    std::function<void(const PropertyInfoStd* property)> func_valueChanged_updateQt{};
};

/** An object that the host publishes: its name and its members. */
struct AbstractContextObjectStd {
    /**
     * The object's name in notifications of changes and signals: the name that it is registered
     * under.
     */
    std::string name;
    /** The methods and signals, by name. */
    std::map<std::string, MethodInfoStd*> methods{};
    /** The properties, by name. */
    std::map<std::string, PropertyInfoStd*> properties{};
};

/**
 * Locks the values of all records: while one exists, the Qt thread neither reads nor writes them.
 * Hold it only for the access itself, and do not call the library while you hold it. If several
 * threads of the host access a value, host callbacks on the Qt thread must hold a ValueLock for
 * their access too.
 */
class MARLUNE_EXPORT ValueLock {
public:
    ValueLock();
    ~ValueLock();
    ValueLock(const ValueLock&) = delete;
    ValueLock& operator=(const ValueLock&) = delete;
};

}  // namespace marlune::db
