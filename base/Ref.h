// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

namespace base {

/// An intrusive reference. Counts aren't atomic: documents belong to one thread. `Nothing` of the control's vocabulary is
/// the empty reference. The class pointed to offers `ref()` and `deref()`.
template <class T> class Ref
{
public:
    Ref() = default;
    Ref(std::nullptr_t) {}
    Ref(T *object) : mObject(object) { acquire(); }
    Ref(const Ref &other) : mObject(other.mObject) { acquire(); }
    template <class U> Ref(const Ref<U> &other) : mObject(other.get()) { acquire(); }
    Ref(Ref &&other) noexcept : mObject(std::exchange(other.mObject, nullptr)) {}
    ~Ref() { release(); }
    Ref &operator=(const Ref &other)
    {
        Ref copy(other);
        std::swap(mObject, copy.mObject);
        return *this;
    }
    Ref &operator=(Ref &&other) noexcept
    {
        Ref moved(std::move(other));
        std::swap(mObject, moved.mObject);
        return *this;
    }

    T *get() const { return mObject; }
    T *operator->() const { return mObject; }
    T &operator*() const { return *mObject; }
    explicit operator bool() const { return mObject != nullptr; }
    friend bool operator==(const Ref &a, const Ref &b) { return a.mObject == b.mObject; }
    friend bool operator==(const Ref &a, const T *b) { return a.mObject == b; }
    friend bool operator==(const Ref &a, std::nullptr_t) { return a.mObject == nullptr; }

private:
    void acquire()
    {
        if (mObject) const_cast<std::remove_const_t<T> *>(mObject)->ref();
    }
    void release()
    {
        if (mObject) const_cast<std::remove_const_t<T> *>(mObject)->deref();
        mObject = nullptr;
    }
    T *mObject = nullptr;
};

/// Base of counted classes that simply delete themselves with the last reference.
class RefCounted
{
public:
    RefCounted(const RefCounted &) = delete;
    RefCounted &operator=(const RefCounted &) = delete;
    void ref() { ++mReferences; }
    void deref()
    {
        if (--mReferences == 0) delete this;
    }

protected:
    RefCounted() = default;
    virtual ~RefCounted() = default;

private:
    uint32_t mReferences = 0;
};

template <class T, class... Arguments> Ref<T> make(Arguments &&...arguments)
{
    return Ref<T>(new T(std::forward<Arguments>(arguments)...));
}

} // namespace base

template <class T> struct std::hash<base::Ref<T>> {
    std::size_t operator()(const base::Ref<T> &ref) const { return std::hash<T *>()(ref.get()); }
};
