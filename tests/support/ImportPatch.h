#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <utility>

/// Replacement of one function that Tessel.dll imports: a row of a table, or the argument of an ImportPatch.
struct Stub {
    std::string name;
    void* function;
    std::shared_ptr<void> callable; ///< what the function calls
};

/// A function with the signature and calling convention of a Windows function that calls an object of any kind. The
/// tag creates one function per stub.
template <class Callable, class Tag> struct StubFunction {
    static inline Callable* current = nullptr;
    template <class R, class... A> static R WINAPI Call(A... arguments) {
        return static_cast<R>((*current)(arguments...));
    }
    template <class R, class... A> static void* Like(R(WINAPI*)(A...)) {
        return reinterpret_cast<void*>(&Call<R, A...>);
    }
#ifndef _WIN64 // where the C library's calling convention differs from Windows'
    template <class R, class... A> static R __cdecl CCall(A... arguments) {
        return static_cast<R>((*current)(arguments...));
    }
    template <class R, class... A> static void* Like(R(__cdecl*)(A...)) {
        return reinterpret_cast<void*>(&CCall<R, A...>);
    }
#endif
};

/// A stub that calls a lambda. The lambda may capture, take `auto...`, and call the real function:
///
///     const ImportPatch patch("CreateEventW", &CreateEventW, [&](auto... a) { return created = CreateEventW(a...); });
template <class Function, class Callable, class Tag = decltype([] {})>
Stub Replacing(const char* name, Function* real, Callable callable) {
    const auto shared = std::make_shared<Callable>(std::move(callable));
    StubFunction<Callable, Tag>::current = shared.get();
    return {name, StubFunction<Callable, Tag>::Like(real), shared};
}

/// A stub that fails: it returns a value and sets the last error (also Winsock's), in every call or only in the n-th;
/// the other calls are real.
///
///     const ImportPatch patch(Failing("MapViewOfFile", &MapViewOfFile, nullptr, ERROR_ACCESS_DENIED));
///     const ImportPatch second(Failing("acmStreamConvert", &acmStreamConvert, MMSYSERR_ERROR, 0, 2));
template <class R, class Function, class Tag = decltype([] {})>
Stub Failing(const char* name, Function* real, R result, DWORD error = 0, int onlyCall = 0) {
    auto fail = [=, calls = 0](auto... arguments) mutable {
        using Result = decltype(real(arguments...));
        if (onlyCall != 0 && ++calls != onlyCall) return real(arguments...);
        SetLastError(error);
        return static_cast<Result>(result);
    };
    return Replacing<Function, decltype(fail), Tag>(name, real, fail);
}

/// Replaces a function in the import table of Tessel.dll while the object exists. Calls from elsewhere, including the
/// test's, reach the real function.
class ImportPatch {
public:
    explicit ImportPatch(Stub stub);
    template <class Function, class Callable, class Tag = decltype([] {})>
    ImportPatch(const char* name, Function* real, Callable callable)
        : ImportPatch(Replacing<Function, Callable, Tag>(name, real, std::move(callable))) {}
    ~ImportPatch();
    ImportPatch(ImportPatch&&) = delete;

private:
    Stub m_stub;
    void** m_slot;
    void* m_original;
};
