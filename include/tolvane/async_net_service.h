#pragma once

#include <QFuture>
#include <QFutureInterface>
#include <QMetaObject>
#include <QObject>
#include <QThread>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>

#include "tolvane/i_liveencoder_net_service.h"

namespace tolvane {

// A host's way to keep its UI thread free: the service lives on a thread of its own, with its
// own event loop, and every operation is posted there; its result comes back on the caller's
// thread. Header-only, so the module still exports nothing but CreateNetService.
//
//     tolvane::AsyncNetService net(loader.createNetService(), &observer, nullptr);
//     net.post([](ILiveencoderNetService& s) { return s.getRoomId(); }, window,
//              [window](int32_t roomId) { window->showRoom(roomId); });
//
// Operations run one at a time in the order they were posted, as the service requires.
// Construct and destroy the object on a thread with a running Qt application, never from inside
// an operation (the destructor waits for the service thread).
class AsyncNetService {
public:
    // Starts the thread and creates the service on it; isValid() tells whether that worked.
    AsyncNetService(CreateNetServiceFunction create, ServiceObserver* observer,
                    BreadcrumbSink* sink)
        : worker_(new QObject) {
        thread_.setObjectName(QStringLiteral("tolvane-service"));
        worker_->moveToThread(&thread_);
        thread_.start();
        // The service binds its timers and replies to the thread that creates it.
        QMetaObject::invokeMethod(
            worker_.get(),
            [this, create, observer, sink] {
                ILiveencoderNetService* service =
                    create != nullptr ? create(observer, sink) : nullptr;
                std::lock_guard<std::mutex> lock(mutex_);
                service_ = service;
            },
            Qt::BlockingQueuedConnection);
        std::lock_guard<std::mutex> lock(mutex_);
        valid_ = service_ != nullptr;
    }

    // Cancels what has not started, lets a running operation finish, stops and releases the
    // service on its own thread, then ends the thread.
    ~AsyncNetService() {
        *open_ = false;
        std::map<quint64, Task> dropped;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            dropped.swap(pending_);
        }
        for (auto& entry : dropped) {
            entry.second.drop();
        }
        QMetaObject::invokeMethod(
            worker_.get(),
            [this] {
                if (service_ != nullptr) {
                    service_->stop();
                    service_->release();
                    service_ = nullptr;
                }
            },
            Qt::BlockingQueuedConnection);
        thread_.quit();
        thread_.wait();
    }

    AsyncNetService(const AsyncNetService&) = delete;
    AsyncNetService& operator=(const AsyncNetService&) = delete;

    bool isValid() const { return valid_; }

    // Runs op(service) on the service thread, then done(result) on context's thread through its
    // event loop; done is skipped when context or this object is destroyed first. Returns the
    // ticket for cancel(), or 0 when there is no service.
    template <class Op, class Done>
    quint64 post(Op op, QObject* context, Done done) {
        if (!valid_ || context == nullptr) {
            return 0;
        }
        using R = std::invoke_result_t<Op&, ILiveencoderNetService&>;
        auto guard = std::make_shared<ContextGuard>(context);
        guard->watch(guard);
        Task task;
        task.run = [op, guard, done, open = open_](ILiveencoderNetService& service) mutable {
            if constexpr (std::is_void_v<R>) {
                op(service);
                guard->deliver([guard, done, open]() mutable {
                    guard->unwatch();
                    if (*open) {
                        done();
                    }
                });
            } else {
                R result = op(service);
                guard->deliver([guard, done, open, result = std::move(result)]() mutable {
                    guard->unwatch();
                    if (*open) {
                        done(std::move(result));
                    }
                });
            }
        };
        task.drop = [guard] { guard->unwatch(); };
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

    // True when the operation had not started and now never will; its done is not called.
    bool cancel(quint64 ticket) {
        Task task;
        {
            std::lock_guard<std::mutex> lock(mutex_);
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
    struct Task {
        std::function<void(ILiveencoderNetService&)> run;
        std::function<void()> drop;  // the operation will never run
    };

    // Knows, on any thread, whether the caller's context object still exists, and posts to it
    // only while it does: its destruction and a delivery exclude each other.
    class ContextGuard {
    public:
        explicit ContextGuard(QObject* context) : context_(context) {}

        void watch(const std::shared_ptr<ContextGuard>& self) {
            connection_ = QObject::connect(context_, &QObject::destroyed, [self] {
                std::lock_guard<std::mutex> lock(self->mutex_);
                self->context_ = nullptr;
            });
        }

        // Also breaks the cycle between the guard and its connection.
        void unwatch() { QObject::disconnect(connection_); }

        template <class Call>
        void deliver(Call call) {
            std::lock_guard<std::mutex> lock(mutex_);
            if (context_ != nullptr) {
                // A queued call to an object that is destroyed before it runs is dropped.
                QMetaObject::invokeMethod(context_, std::move(call), Qt::QueuedConnection);
            }
        }

    private:
        std::mutex mutex_;
        QObject* context_;
        QMetaObject::Connection connection_;
    };

    quint64 enqueue(Task task) {
        quint64 ticket = 0;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            ticket = ++lastTicket_;
            pending_.emplace(ticket, std::move(task));
        }
        QMetaObject::invokeMethod(
            worker_.get(), [this, ticket] { runTicket(ticket); }, Qt::QueuedConnection);
        return ticket;
    }

    // On the service thread; a ticket cancelled meanwhile is no longer pending.
    void runTicket(quint64 ticket) {
        Task task;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            const auto it = pending_.find(ticket);
            if (it == pending_.end()) {
                return;
            }
            task = std::move(it->second);
            pending_.erase(it);
        }
        task.run(*service_);
    }

    QThread thread_;
    std::unique_ptr<QObject> worker_;  // lives on thread_; queued calls run there
    std::mutex mutex_;                 // guards pending_ and lastTicket_
    std::map<quint64, Task> pending_;
    quint64 lastTicket_ = 0;
    ILiveencoderNetService* service_ = nullptr;  // touched only on thread_ after construction
    bool valid_ = false;
    // Cleared first by the destructor, so that answers still queued for callers are dropped.
    std::shared_ptr<std::atomic<bool>> open_ = std::make_shared<std::atomic<bool>>(true);
};

}  // namespace tolvane
