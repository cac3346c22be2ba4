#pragma once

#include <QMetaObject>
#include <QObject>
#include <QReadWriteLock>

#include <atomic>
#include <unordered_set>

namespace marlune {

/**
 * The objects of the Qt thread to which calls may be posted: the views, the context object and the
 * scheme handler, from their construction to their destruction.
 *
 * A facade, or a copy of one, can outlive its view. So a caller's thread looks its target up here
 * and posts under a shared lock, and an object is removed under an exclusive one before its
 * destructor does anything. A call is therefore either refused or queued on a complete object, and
 * Qt discards a queued call, together with its functor, when it destroys the object.
 *
 * No lock is held while anything is called, other than the short work of with_live_object().
 */
class LiveObjects {
public:
    /** Never destroyed: threads that Qt or the host leave running at exit may still look in. */
    static LiveObjects& instance();

    void add(QObject* object);
    void remove(QObject* object);
    bool contains(QObject* object) const;

    /**
     * Removes all objects and adds no more. The Qt thread calls it once its event loop has ended.
     */
    void close();

    /** The same in a forked process, where a thread that does not exist may hold the lock. */
    void abandon() { closed_ = true; }

    bool is_closed() const { return closed_; }

    /** Queues the functor on the object. False, with the functor destroyed, when it is not live. */
    template <typename Functor>
    bool post(QObject* object, Functor&& functor) const
    {
        if (closed_)
            return false;
        const QReadLocker locker(&lock_);
        return objects_.contains(object)
            && QMetaObject::invokeMethod(object, std::forward<Functor>(functor),
                                         Qt::QueuedConnection);
    }

    /**
     * Runs the work on the calling thread, and keeps the object from being destroyed meanwhile. The
     * work must be short, must not wait, and may use only what the object allows to any thread. It
     * does not run when the object is not live.
     */
    template <typename Work>
    void with_live_object(QObject* object, Work&& work) const
    {
        if (closed_)
            return;
        const QReadLocker locker(&lock_);
        if (objects_.contains(object))
            work(*object);
    }

private:
    LiveObjects() = default;

    /** Not the standard library's, which lets busy readers keep a writer waiting. */
    mutable QReadWriteLock lock_;
    std::unordered_set<QObject*> objects_;
    std::atomic<bool> closed_ = false;
};

/** A member of each object to which calls are posted: keeps it in LiveObjects while it lives. */
class LiveObject {
public:
    explicit LiveObject(QObject* object) : object_(object) { LiveObjects::instance().add(object); }
    ~LiveObject() { withdraw(); }
    Q_DISABLE_COPY_MOVE(LiveObject)

    /** Removes the object early, in the destructor of its class. */
    void withdraw() { LiveObjects::instance().remove(object_); }

private:
    QObject* object_;
};

}  // namespace marlune
