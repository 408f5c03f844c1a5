// A client that is a thread of its own and carries out one call at a time.
#pragma once

#include "driver.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace wbtrvtest {

struct Threaded {
    std::mutex Mutex;
    std::condition_variable Changed;
    const std::function<void()> *Wanted = nullptr;
    bool Ends = false;
    PositionBlocks Blocks{};
    std::thread Thread{[this] { Serve(); }};

    Threaded() = default;
    Threaded(const Threaded &) = delete;
    Threaded &operator=(const Threaded &) = delete;
    ~Threaded()
    {
        {
            const std::lock_guard lock(Mutex);
            Ends = true;
        }
        Changed.notify_all();
        Thread.join();
    }

    // Does something in the thread and waits until it is done.
    void Do(const std::function<void()> &work)
    {
        std::unique_lock lock(Mutex);
        Wanted = &work;
        Changed.notify_all();
        Changed.wait(lock, [&] { return Wanted == nullptr; });
    }
    Answer operator()(const Request &request)
    {
        Answer answer;
        Do([&] { answer = Carry(Blocks, request); });
        return answer;
    }

private:
    void Serve()
    {
        std::unique_lock lock(Mutex);
        for (;;) {
            Changed.wait(lock, [&] { return Wanted != nullptr || Ends; });
            if (Ends) return;
            (*Wanted)();
            Wanted = nullptr;
            Changed.notify_all();
        }
    }
};

} // namespace wbtrvtest
