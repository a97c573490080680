#pragma once

// Replaces the C library's functions for files in the executable, so that tests can record the
// calls of an operation and make any of them fail. Include it in only one source of an executable.
// While no test::SystemCalls object lives, the functions behave like those of the C library.

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <dlfcn.h>
#include <map>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace test {

/// While it lives, records each call of open, fstat, read, write and close, and replaces the
/// results of chosen calls. Calls that read or write 0 bytes do not count. Use one object at a
/// time, in one thread.
class SystemCalls {
public:
    SystemCalls() { current() = this; }
    SystemCalls(SystemCalls const&) = delete;
    SystemCalls& operator=(SystemCalls const&) = delete;
    ~SystemCalls() { current() = nullptr; }

    /// Makes the `k`-th call (counted from 1) of this function fail with this error, without
    /// calling the system. Only close does call the system, because on Linux a failed close has
    /// closed the file.
    SystemCalls& fail(std::string const& function, unsigned int k, int error) {
        answers_[{function, k}] = {-1, error};
        return *this;
    }

    /// Makes the `k`-th call of this function return this result without calling the system.
    SystemCalls& answer(std::string const& function, unsigned int k, std::ptrdiff_t result) {
        answers_[{function, k}] = {result, 0};
        return *this;
    }

    /// Limits the `k`-th call of `read` or `write` to `count` bytes.
    SystemCalls& limit(std::string const& function, unsigned int k, std::size_t count) {
        limits_[{function, k}] = count;
        return *this;
    }

    /// Makes fstat report this size.
    SystemCalls& pretendSize(std::int64_t size) {
        pretendedSize_ = size;
        return *this;
    }

    /// The calls in their order, such as "open fstat read(24) close".
    std::string const& log() const { return log_; }
    /// The number of calls of this function.
    unsigned int count(std::string const& function) const {
        auto const entry = counts_.find(function);
        return entry == counts_.end() ? 0 : entry->second;
    }
    /// The buffer of the last read or write.
    void const* buffer() const { return buffer_; }
    /// The flags of the last open.
    int flags() const { return flags_; }

    // Used by the replaced functions.

    static SystemCalls*& current() {
        static SystemCalls* calls = nullptr;
        return calls;
    }

    /// Records a call. Returns true, with `result` set, if the test has chosen the call's result.
    bool meets(std::string const& function, std::ptrdiff_t& result) {
        log_ += (log_.empty() ? "" : " ") + function;
        return takesOver(function, result);
    }

    /// The same for calls that read or write `count` bytes; may reduce `count`.
    bool meets(std::string const& function, void const* bytes, std::size_t& count,
               std::ptrdiff_t& result) {
        log_ += (log_.empty() ? "" : " ") + function + "(" + std::to_string(count) + ")";
        buffer_ = bytes;
        bool const taken = takesOver(function, result);
        auto const limit = limits_.find({function, counts_[function]});
        if (limit != limits_.end() && limit->second < count)
            count = limit->second;
        return taken;
    }

    void noteFlags(int flags) { flags_ = flags; }
    std::optional<std::int64_t> pretendedSize() const { return pretendedSize_; }

private:
    struct Answer {
        std::ptrdiff_t result;
        int error;
    };

    bool takesOver(std::string const& function, std::ptrdiff_t& result) {
        auto const answer = answers_.find({function, ++counts_[function]});
        if (answer == answers_.end())
            return false;
        result = answer->second.result;
        errno = answer->second.error;
        return true;
    }

    std::map<std::pair<std::string, unsigned int>, Answer> answers_;
    std::map<std::pair<std::string, unsigned int>, std::size_t> limits_;
    std::map<std::string, unsigned int> counts_;
    std::optional<std::int64_t> pretendedSize_;
    std::string log_;
    void const* buffer_ = nullptr;
    int flags_ = 0;
};

namespace system_calls {

/// Returns the C library's function of this name.
template <class Function>
Function original(char const* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// These functions have other names in C++ than in the object file. Otherwise they could conflict
// with inline definitions in the C library's headers.
extern "C" int replacedOpen(char const* path, int flags, mode_t mode) __asm__("open64");
extern "C" int replacedStatus(int descriptor, struct stat64* status) __asm__("fstat64");
extern "C" ssize_t replacedRead(int descriptor, void* bytes, std::size_t count) __asm__("read");
extern "C" ssize_t replacedWrite(int descriptor, void const* bytes,
                                 std::size_t count) __asm__("write");
extern "C" int replacedClose(int descriptor) __asm__("close");

} // namespace system_calls

} // namespace test

extern "C" int test::system_calls::replacedOpen(char const* path, int flags, mode_t mode) {
    std::ptrdiff_t result;
    if (SystemCalls* const calls = SystemCalls::current()) {
        calls->noteFlags(flags);
        if (calls->meets("open", result))
            return static_cast<int>(result);
    }
    return original<int (*)(char const*, int, ...)>("open64")(path, flags, mode);
}

extern "C" int test::system_calls::replacedStatus(int descriptor, struct stat64* status) {
    std::ptrdiff_t result;
    SystemCalls* const calls = SystemCalls::current();
    if (calls && calls->meets("fstat", result))
        return static_cast<int>(result);
    int const done = original<int (*)(int, struct stat64*)>("fstat64")(descriptor, status);
    if (calls && calls->pretendedSize())
        status->st_size = *calls->pretendedSize();
    return done;
}

extern "C" ssize_t test::system_calls::replacedRead(int descriptor, void* bytes,
                                                    std::size_t count) {
    std::ptrdiff_t result;
    SystemCalls* const calls = SystemCalls::current();
    if (calls && count > 0 && calls->meets("read", bytes, count, result))
        return result;
    return original<ssize_t (*)(int, void*, std::size_t)>("read")(descriptor, bytes, count);
}

extern "C" ssize_t test::system_calls::replacedWrite(int descriptor, void const* bytes,
                                                     std::size_t count) {
    std::ptrdiff_t result;
    SystemCalls* const calls = SystemCalls::current();
    if (calls && count > 0 && calls->meets("write", bytes, count, result))
        return result;
    return original<ssize_t (*)(int, void const*, std::size_t)>("write")(descriptor, bytes, count);
}

extern "C" int test::system_calls::replacedClose(int descriptor) {
    std::ptrdiff_t result;
    SystemCalls* const calls = SystemCalls::current();
    bool const fails = calls && calls->meets("close", result);
    int const error = errno;
    int const closed = original<int (*)(int)>("close")(descriptor);
    if (!fails)
        return closed;
    errno = error;
    return static_cast<int>(result);
}
