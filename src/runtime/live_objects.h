#pragma once

#include <QMetaObject>
#include <QObject>
#include <QReadWriteLock>

#include <atomic>
#include <unordered_set>

namespace marlune {

/**
 * The objects of the Qt thread to which calls may be carried: the views, the context object and the
 * scheme handler, from their construction to their destruction.
 *
 * A facade, or a copy of one, can outlive its view. So a caller's thread looks its target up here
 * and posts under a shared lock; an object leaves under an exclusive one, before anything of it is
 * taken down. A call is therefore either refused or queued on an object that still stands, and one
 * that is still queued when the object goes is discarded by Qt, together with its functor.
 *
 * No lock is held while anything is called, but for visit()'s short look.
 */
class LiveObjects {
public:
    /** Never destroyed: threads that Qt or the host leave running at exit may still look in. */
    static LiveObjects& instance();

    void add(QObject* object);
    void remove(QObject* object);
    bool contains(QObject* object) const;

    /** For good: nothing is live any more. The Qt thread calls it once its event loop has ended. */
    void close();

    /** The same in a forked process, where the lock may be held by a thread that is not there. */
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
     * Runs `look` on the calling thread while the object is kept from going. `look` must be short, must
     * not wait, and may touch only what the object allows to any thread. Not run when it is not live.
     */
    template <typename Functor>
    void visit(QObject* object, Functor&& look) const
    {
        if (closed_)
            return;
        const QReadLocker locker(&lock_);
        if (objects_.contains(object))
            look(*object);
    }

private:
    LiveObjects() = default;

    /** Not the standard library's, which lets busy readers keep a writer waiting. */
    mutable QReadWriteLock lock_;
    std::unordered_set<QObject*> objects_;
    std::atomic<bool> closed_ = false;
};

/** A member of each object that calls are carried to: keeps it in LiveObjects while it lives. */
class LiveObject {
public:
    explicit LiveObject(QObject* object) : object_(object) { LiveObjects::instance().add(object); }
    ~LiveObject() { withdraw(); }
    Q_DISABLE_COPY_MOVE(LiveObject)

    /** Ends it early, for an object whose destructor is at work. */
    void withdraw() { LiveObjects::instance().remove(object_); }

private:
    QObject* object_;
};

}  // namespace marlune
