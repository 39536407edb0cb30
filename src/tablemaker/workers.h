// Work over a range of numbers, shared out to threads in chunks.
#pragma once

#include "board/types.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace quelmar::tablemaker {

class Workers {
public:
    explicit Workers(int threads) : threads_(std::max(threads, 1)) {}

    // Calls work(first, last) for chunks that together make up 0..total, on all threads at once; returns when
    // everything is done. The first exception of a chunk is thrown again here, the rest of the range left
    // out.
    template <typename F> void share(u64 total, u64 chunk, const F& work) const {
        std::atomic<u64> next{0};
        std::exception_ptr failure;
        std::mutex failure_lock;
        const auto run = [&] {
            try {
                for (u64 first = next.fetch_add(chunk); first < total; first = next.fetch_add(chunk))
                    work(first, std::min(first + chunk, total));
            } catch (...) {
                next = total;
                const std::lock_guard lock(failure_lock);
                if (!failure)
                    failure = std::current_exception();
            }
        };
        {
            const Helpers helpers(run, chunk < total ? threads_ - 1 : 0);
            run();
        }
        if (failure)
            std::rethrow_exception(failure);
    }

private:
    // Threads that are joined when the object goes.
    class Helpers {
    public:
        // Where the system gives no more threads the work is done by fewer.
        template <typename F> Helpers(const F& run, int count) {
            threads_.reserve(static_cast<std::size_t>(count));
            try {
                for (int i = 0; i < count; ++i)
                    threads_.emplace_back(run);
            } catch (const std::system_error&) {
                return;
            }
        }
        Helpers(const Helpers&) = delete;
        Helpers& operator=(const Helpers&) = delete;
        ~Helpers() {
            for (std::thread& thread : threads_)
                thread.join();
        }

    private:
        std::vector<std::thread> threads_;
    };

    int threads_;
};

}  // namespace quelmar::tablemaker
