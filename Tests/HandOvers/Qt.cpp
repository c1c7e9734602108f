// Jobs given to Qt's pools, what futures bring, what is posted to another thread's objects, and
// threads with an event loop that have ended.
#include "Edges.h"

#include <QDeadlineTimer>
#include <QFutureInterface>
#include <QObject>
#include <QRunnable>
#include <QThread>
#include <QThreadPool>

#include <cstring>
#include <functional>
#include <utility>

using stillwick::testing::original;

namespace {

/// A job that has seen all that came before it was given to a pool.
class SeenRunnable final : public QRunnable {
public:
    explicit SeenRunnable(QRunnable& job) : m_job(job) { __tsan_release(this); }

    void run() override {
        __tsan_acquire(this);
        const bool isOurs = m_job.autoDelete();
        m_job.run();
        if (isOurs)
            delete &m_job;
    }

private:
    QRunnable& m_job;
};

/// What all copies of a future and of its promise share.
void* sharedState(const QFutureInterfaceBase& future) {
    void* state = nullptr;
    std::memcpy(&state, reinterpret_cast<const char*>(&future) + sizeof(void*), sizeof state);
    return state;
}

/// Acquires a place at its end, also where that is an exception's way.
struct Acquired {
    void* place;

    ~Acquired() { __tsan_acquire(place); }
};

/// Calls a slot that has seen all that came before it was posted.
struct SeenSlot {
    QtPrivate::QSlotObjectBase* slot;

    // Until it has acquired it, reading what it is to acquire would be a race.
    __attribute__((no_sanitize("thread"))) void operator()() const {
        __tsan_acquire(slot);
        void* nothing[] = {nullptr};
        slot->call(nullptr, nothing);
        slot->destroyIfLastRef();
    }
};

} // namespace

void QThreadPool::start(QRunnable* job, int priority) {
    static auto* const start =
        original<void(QThreadPool*, QRunnable*, int)>("_ZN11QThreadPool5startEP9QRunnablei");
    start(this, new SeenRunnable(*job), priority);
}

void QThreadPool::start(std::function<void()> job, int priority) {
    start(QRunnable::create(std::move(job)), priority);
}

void QFutureInterfaceBase::reportFinished() {
    static auto* const report =
        original<void(QFutureInterfaceBase*)>("_ZN20QFutureInterfaceBase14reportFinishedEv");
    __tsan_release(sharedState(*this));
    report(this);
}

void QFutureInterfaceBase::waitForFinished() {
    static auto* const wait =
        original<void(QFutureInterfaceBase*)>("_ZN20QFutureInterfaceBase15waitForFinishedEv");
    const Acquired afterwards{sharedState(*this)};
    wait(this);
}

void QFutureInterfaceBase::waitForResult(int index) {
    static auto* const wait =
        original<void(QFutureInterfaceBase*, int)>("_ZN20QFutureInterfaceBase13waitForResultEi");
    const Acquired afterwards{sharedState(*this)};
    wait(this, index);
}

bool QFutureInterfaceBase::queryState(State state) const {
    static auto* const query = original<bool(const QFutureInterfaceBase*, State)>(
        "_ZNK20QFutureInterfaceBase10queryStateENS_5StateE");
    const bool isSo = query(this, state);
    if (isSo)
        __tsan_acquire(sharedState(*this));
    return isSo;
}

bool QFutureInterfaceBase::derefT() const noexcept {
    static auto* const dereference =
        original<bool(const QFutureInterfaceBase*)>("_ZNK20QFutureInterfaceBase6derefTEv");
    void* const state = sharedState(*this);
    __tsan_release(state);
    const bool isHeld = dereference(this);
    if (!isHeld)
        __tsan_acquire(state);
    return isHeld;
}

int QThread::exec() {
    static auto* const execute = original<int(QThread*)>("_ZN7QThread4execEv");
    __tsan_release(this);
    return execute(this);
}

bool QThread::wait(QDeadlineTimer deadline) {
    static auto* const wait =
        original<bool(QThread*, QDeadlineTimer)>("_ZN7QThread4waitE14QDeadlineTimer");
    const bool hasEnded = wait(this, deadline);
    if (hasEnded)
        __tsan_acquire(this);
    return hasEnded;
}

bool QMetaObject::invokeMethodImpl(QObject* object, QtPrivate::QSlotObjectBase* slot,
                                   Qt::ConnectionType type, void* result) {
    static auto* const invoke =
        original<bool(QObject*, QtPrivate::QSlotObjectBase*, Qt::ConnectionType, void*)>(
            "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt"
            "14ConnectionTypeEPv");
    if (result)
        return invoke(object, slot, type, result);
    using Seen = QtPrivate::QFunctorSlotObject<SeenSlot, 0, QtPrivate::List<>, void>;
    auto* const seen = new Seen(SeenSlot{slot});
    __tsan_release(slot);
    return invoke(object, seen, type, nullptr);
}
