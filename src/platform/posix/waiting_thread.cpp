#include "platform/posix/waiting_thread.h"

#include <ctime>

namespace tollan::platform::posix {

namespace {
constexpr int64_t kNanosPerSecond = 1000000000;
}

WaitingThread::WaitingThread() noexcept
{
    initCondition();
}

void WaitingThread::resetInChild() noexcept
{
    forgetInChild();
    running_ = false;
    pthread_cond_destroy(&changed_);
    initCondition();
    pthread_mutex_unlock(&mutex_);
}

void WaitingThread::wake() noexcept
{
    if (running_) pthread_cond_signal(&changed_);
}

bool WaitingThread::wakeOrStart() noexcept
{
    if (running_) {
        wake();
        return true;
    }
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    running_ = pthread_create(&thread, &attributes, &WaitingThread::main, this) == 0;
    pthread_attr_destroy(&attributes);
    return running_;
}

void WaitingThread::sleepUntil(int64_t dueNs) noexcept
{
    if (dueNs == kNever) {
        pthread_cond_wait(&changed_, &mutex_);
        return;
    }
    const timespec until{static_cast<time_t>(dueNs / kNanosPerSecond),
                         static_cast<long>(dueNs % kNanosPerSecond)};
    pthread_cond_timedwait(&changed_, &mutex_, &until);
}

void WaitingThread::initCondition() noexcept
{
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&changed_, &attributes);
    pthread_condattr_destroy(&attributes);
}

void *WaitingThread::main(void *self) noexcept
{
    auto *thread = static_cast<WaitingThread *>(self);
    pthread_mutex_lock(&thread->mutex_);
    thread->run();
    thread->running_ = false;
    pthread_mutex_unlock(&thread->mutex_);
    return nullptr;
}

}  // namespace tollan::platform::posix
