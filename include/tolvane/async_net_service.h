#pragma once

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEvent>
#include <QEventLoop>
#include <QFuture>
#include <QFutureInterface>
#include <QObject>
#include <QThread>
#include <QVariant>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>

#include "tolvane/i_liveencoder_net_service.h"
#include "tolvane/operation_abort.h"

namespace tolvane {

// A host's way to keep its UI thread free: the service lives on a thread of its own, with its
// own event loop, and every operation is posted there; its result comes back on the caller's
// thread. Header-only, so the module still exports nothing but CreateNetService.
//
//     tolvane::AsyncNetService net(loader.createNetService(), &observer, nullptr);
//     net.post([](ILiveencoderNetService& s) { return s.getRoomId(); }, window,
//              [window](int32_t roomId) { window->showRoom(roomId); });
//
// Operations run one at a time in the order they were posted, as the service requires. The
// HTTP transfers of a running operation can be aborted (cancel(), the destructor): the operation
// then returns at once as if nothing had answered. Construct and destroy the object while a Qt
// application exists, never from inside an operation (the destructor waits for the service
// thread, a few tens of milliseconds). The observer and the breadcrumb sink
// are called as without this object (barrage events on the module's threads, breadcrumbs on the
// service thread) and must outlive it. Every hand-over between threads goes through this
// object's own locks, so that ThreadSanitizer sees it.
class AsyncNetService {
public:
    // Starts the thread and creates the service on it; isValid() tells whether that worked.
    AsyncNetService(CreateNetServiceFunction create, ServiceObserver* observer,
                    BreadcrumbSink* sink) {
        thread_ = std::thread([this, create, observer, sink] { serve(create, observer, sink); });
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return started_; });
        valid_ = service_ != nullptr;
    }

    // Cancels what has not started, aborts a running operation, stops and releases the service
    // on its own thread, then ends and joins the thread. No done is called afterwards. While it
    // waits, this thread keeps serving its queued Qt calls: a host callback that waits for this
    // thread (a blocking queued connection to the GUI thread) may be what the service waits for.
    ~AsyncNetService() {
        *open_ = false;
        std::map<quint64, Task> dropped;
        std::unique_lock<std::mutex> lock(mutex_);
        abort_ = true;
        closed_ = true;
        dropped.swap(pending_);
        wakeLocked(kReleaseTicket);
        lock.unlock();
        for (auto& entry : dropped) {
            entry.second.drop();
        }
        lock.lock();
        const auto finished = [this] { return finished_; };
        if (QAbstractEventDispatcher::instance() == nullptr) {
            changed_.wait(lock, finished);
        }
        while (!changed_.wait_for(lock, std::chrono::milliseconds(2), finished)) {
            lock.unlock();
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
            lock.lock();
        }
        lock.unlock();
        thread_.join();
    }

    AsyncNetService(const AsyncNetService&) = delete;
    AsyncNetService& operator=(const AsyncNetService&) = delete;

    bool isValid() const { return valid_; }

    // Runs op(service) on the service thread, then done(result) on context's thread through its
    // event loop; done is skipped when context or this object is destroyed first. Returns the
    // ticket for cancel(), or 0 when there is no service or the destructor has begun.
    template <class Op, class Done>
    quint64 post(Op op, QObject* context, Done done) {
        if (!valid_ || context == nullptr) {
            return 0;
        }
        using R = std::invoke_result_t<Op&, ILiveencoderNetService&>;
        auto delivery = std::make_shared<Delivery>();
        delivery->courier = new Courier(delivery, open_, context);
        Task task;
        task.run = [op, delivery, done](ILiveencoderNetService& service) mutable {
            if constexpr (std::is_void_v<R>) {
                op(service);
                delivery->send([done]() mutable { done(); });
            } else {
                auto answer = [done, result = op(service)]() mutable { done(std::move(result)); };
                delivery->send(std::move(answer));
            }
        };
        task.drop = [delivery] { delivery->send(nullptr); };
        task.silence = [delivery] { return delivery->silence(); };
        return enqueue(std::move(task));
    }

    // Runs op(service) on the service thread; the future carries its result. Cancelling the
    // future before the operation starts means it never runs. Without a service the future
    // comes back cancelled.
    template <class Op>
    QFuture<std::invoke_result_t<Op&, ILiveencoderNetService&>> post(Op op) {
        using R = std::invoke_result_t<Op&, ILiveencoderNetService&>;
        QFutureInterface<R> promise;
        promise.reportStarted();
        QFuture<R> future = promise.future();
        Task task;
        task.run = [op, promise](ILiveencoderNetService& service) mutable {
            if (!promise.isCanceled()) {
                if constexpr (std::is_void_v<R>) {
                    op(service);
                } else {
                    promise.reportResult(op(service));
                }
            }
            promise.reportFinished();
        };
        task.drop = [promise]() mutable {
            promise.reportCanceled();
            promise.reportFinished();
        };
        if (!valid_) {
            task.drop();
        } else {
            enqueue(std::move(task));
        }
        return future;
    }

    // True when the operation's done will now never be called: either it had not started and
    // never will, or it was running and its transfers are aborted (it returns as if nothing had
    // answered, 210 where it has a result code, and that result is dropped). False for a ticket
    // whose done has already been called or is not known.
    bool cancel(quint64 ticket) {
        Task task;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (ticket != kReleaseTicket && ticket == runningTicket_) {
                abort_ = true;
                return runningSilence_();
            }
            const auto it = pending_.find(ticket);
            if (it == pending_.end()) {
                return false;
            }
            task = std::move(it->second);
            pending_.erase(it);
        }
        task.drop();
        return true;
    }

private:
    static constexpr quint64 kReleaseTicket = 0;

    struct Task {
        std::function<void(ILiveencoderNetService&)> run;
        std::function<void()> drop;     // the operation will never run
        std::function<bool()> silence;  // its done must not run; false when it already has
    };

    // Calls a function for every custom event posted to it; needs no moc.
    class EventTarget : public QObject {
    public:
        explicit EventTarget(std::function<void()> onEvent) : onEvent_(std::move(onEvent)) {}

    protected:
        void customEvent(QEvent*) override { onEvent_(); }

    private:
        std::function<void()> onEvent_;
    };

    class Courier;

    // One answer on its way from the service thread to the courier on the caller's thread.
    struct Delivery {
        std::mutex mutex;
        Courier* courier = nullptr;    // null once the courier is gone
        std::function<void()> answer;  // null: the operation was dropped
        bool silenced = false;         // cancelled while it ran
        bool delivered = false;        // the courier has taken the answer

        void send(std::function<void()> call) {
            std::lock_guard<std::mutex> lock(mutex);
            if (courier != nullptr) {
                // The event still goes, so that the courier ends.
                answer = silenced ? nullptr : std::move(call);
                QCoreApplication::postEvent(courier, new QEvent(QEvent::User));
            }
        }
        bool silence() {
            std::lock_guard<std::mutex> lock(mutex);
            silenced = true;
            answer = nullptr;
            return !delivered;
        }
    };

    // Lives on the context's thread and dies with the context, so an answer for a destroyed
    // context is never delivered.
    class Courier : public QObject {
    public:
        Courier(std::shared_ptr<Delivery> delivery, std::shared_ptr<std::atomic<bool>> open,
                QObject* context)
            : delivery_(std::move(delivery)), open_(std::move(open)) {
            if (context->thread() == QThread::currentThread()) {
                setParent(context);
            } else {
                moveToThread(context->thread());
                QObject::connect(context, &QObject::destroyed, this, [this] { delete this; });
            }
        }
        ~Courier() override {
            std::lock_guard<std::mutex> lock(delivery_->mutex);
            delivery_->courier = nullptr;
        }

    protected:
        void customEvent(QEvent*) override {
            std::function<void()> answer;
            {
                std::lock_guard<std::mutex> lock(delivery_->mutex);
                answer = std::move(delivery_->answer);
                delivery_->delivered = delivery_->delivered || answer != nullptr;
            }
            if (answer && *open_) {
                answer();
            }
            deleteLater();
        }

    private:
        std::shared_ptr<Delivery> delivery_;
        std::shared_ptr<std::atomic<bool>> open_;
    };

    // The service thread: its event loop, the service, and the queue of tickets.
    void serve(CreateNetServiceFunction create, ServiceObserver* observer, BreadcrumbSink* sink) {
        QEventLoop loop;
        EventTarget target([this, &loop] { runNext(loop); });
        // The module watches this flag during the transfers it runs on this thread.
        QThread::currentThread()->setProperty(kOperationAbortProperty,
                                              QVariant::fromValue(static_cast<void*>(&abort_)));
        // The service binds its timers and replies to the thread that creates it.
        ILiveencoderNetService* service = create != nullptr ? create(observer, sink) : nullptr;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            target_ = &target;
            service_ = service;
            started_ = true;
        }
        changed_.notify_all();
        loop.exec();
        {
            std::lock_guard<std::mutex> lock(mutex_);
            finished_ = true;
        }
        changed_.notify_all();
    }

    // Posting under the lock keeps the event, and everything queued with it, visibly ordered
    // before the service thread reads it.
    void wakeLocked(quint64 ticket) {
        order_.push_back(ticket);
        QCoreApplication::postEvent(target_, new QEvent(QEvent::User));
    }

    // 0, with the task dropped, once the destructor has begun (a host event it serves may post).
    quint64 enqueue(Task task) {
        std::unique_lock<std::mutex> lock(mutex_);
        if (closed_) {
            lock.unlock();
            task.drop();
            return 0;
        }
        const quint64 ticket = ++lastTicket_;
        pending_.emplace(ticket, std::move(task));
        wakeLocked(ticket);
        return ticket;
    }

    // On the service thread, once per posted ticket; a ticket cancelled meanwhile is skipped.
    void runNext(QEventLoop& loop) {
        if (inTask_) {
            // A local event loop of the running operation (the login library's, the Qt
            // client's) delivered this event: its ticket keeps its place and gets an event of its
            // own once the operation has returned, so a release never runs under an operation.
            ++deferred_;
            return;
        }
        Task task;
        ILiveencoderNetService* service = nullptr;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            const quint64 ticket = order_.front();
            order_.pop_front();
            service = service_;
            if (ticket == kReleaseTicket) {
                service_ = nullptr;
            } else {
                const auto it = pending_.find(ticket);
                if (it == pending_.end()) {
                    return;
                }
                task = std::move(it->second);
                pending_.erase(it);
                runningTicket_ = ticket;
                runningSilence_ =
                    task.silence ? task.silence : std::function<bool()>([] { return false; });
                abort_ = false;
            }
        }
        if (task.run) {
            inTask_ = true;
            task.run(*service);
            inTask_ = false;
            std::lock_guard<std::mutex> lock(mutex_);
            runningTicket_ = kReleaseTicket;
            runningSilence_ = nullptr;
            for (; deferred_ > 0; --deferred_) {
                QCoreApplication::postEvent(target_, new QEvent(QEvent::User));
            }
        } else {
            if (service != nullptr) {
                service->stop();
                service->release();
            }
            loop.quit();
        }
    }

    std::thread thread_;
    std::mutex mutex_;  // guards everything below that both threads touch
    std::condition_variable changed_;
    bool started_ = false;
    bool closed_ = false;            // the destructor has begun; nothing more is queued
    bool finished_ = false;          // the service is released and its thread's loop has ended
    EventTarget* target_ = nullptr;  // on the service thread; receives one event per ticket
    ILiveencoderNetService* service_ = nullptr;
    std::map<quint64, Task> pending_;
    std::deque<quint64> order_;
    quint64 lastTicket_ = 0;
    quint64 runningTicket_ = kReleaseTicket;  // none
    std::function<bool()> runningSilence_;
    // Service thread only: an operation is running, and how many ticket events arrived meanwhile.
    bool inTask_ = false;
    int deferred_ = 0;
    // Read by the module on the service thread; raised by cancel() and the destructor, lowered
    // before each operation.
    std::atomic<bool> abort_{false};
    bool valid_ = false;  // written once by the constructor
    // Cleared first by the destructor, so that answers still queued for callers are dropped.
    std::shared_ptr<std::atomic<bool>> open_ = std::make_shared<std::atomic<bool>>(true);
};

}  // namespace tolvane
