// What all records have in common.

#ifndef KORVOGITSERVICE_RKTRECORD_H
#define KORVOGITSERVICE_RKTRECORD_H

#include <mutex>
#include <utility>

#include "KorvoGitService/RKTExport.h"

/// An object with identity, held by std::shared_ptr, whose properties are atomic one by one: a
/// getter returns a copy, a setter stores one, both from any thread. Nothing spans two properties.
class RKT_EXPORT RKTRecord {
public:
    RKTRecord(const RKTRecord&) = delete;
    RKTRecord& operator=(const RKTRecord&) = delete;

protected:
    RKTRecord() = default;
    ~RKTRecord() = default;

    /// A copy, made under the lock.
    template <class T>
    T get(const T& field) const {
        const std::lock_guard lock(mutex_);
        return field;
    }

    /// The old value is destroyed after the lock is released: it may own a caller's object.
    template <class T>
    void set(T& field, T value) {
        const std::lock_guard lock(mutex_);
        std::swap(field, value);
    }

private:
    mutable std::mutex mutex_;
};

#endif
