// A callback that may be copied, tested and replaced from any thread.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>

namespace Public::Base {

template <class Signature>
class Function;

/// Holds a callable. Copying, testing, assigning and calling are safe while other threads do the same: a lock is held
/// for the copy of the target only, never during the call. Calling an empty one does nothing and gives a default value.
template <class Result, class... Args>
class Function<Result(Args...)> {
public:
    Function() = default;
    Function(std::nullptr_t) {}  // NOLINT(google-explicit-constructor)

    /// From a free function or a lambda. A null function pointer makes an empty one.
    template <class Callable, class = std::enable_if_t<!std::is_same_v<std::decay_t<Callable>, Function> &&
                                                       std::is_invocable_r_v<Result, Callable&, Args...>>>
    Function(Callable callable)  // NOLINT(google-explicit-constructor)
    {
        Target target(std::move(callable));
        if (target) mTarget = std::make_shared<const Target>(std::move(target));
    }

    /// From a member function and its object; a shared pointer is kept, a plain one must outlive the callback. A null
    /// one of either makes an empty callback.
    template <class Class, class Object>
    Function(Result (Class::*member)(Args...), Object object) : Function(bind(member, std::move(object))) {}
    template <class Class, class Object>
    Function(Result (Class::*member)(Args...) const, Object object) : Function(bind(member, std::move(object))) {}

    Function(const Function& other) : mTarget(other.target()) {}
    Function& operator=(const Function& other) {
        auto fresh = other.target();
        std::lock_guard lock(mMutex);
        mTarget.swap(fresh);  // what was held goes after the lock is given back
        return *this;
    }

    explicit operator bool() const { return target() != nullptr; }
    bool operator!() const { return target() == nullptr; }

    Result operator()(Args... args) const {
        if (auto callee = target()) return (*callee)(std::forward<Args>(args)...);
        return Result();
    }

private:
    using Target = std::function<Result(Args...)>;

    template <class Member, class Object>
    static Target bind(Member member, Object object) {
        if (!member || !object) return nullptr;
        return [member, object](Args... args) { return ((*object).*member)(std::forward<Args>(args)...); };
    }

    std::shared_ptr<const Target> target() const {
        std::lock_guard lock(mMutex);
        return mTarget;
    }

    mutable std::mutex mMutex;
    std::shared_ptr<const Target> mTarget;
};

}  // namespace Public::Base
