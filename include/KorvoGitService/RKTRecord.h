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

    /// To be kept while a property is read or changed.
    std::unique_lock<std::mutex> lock() const {
        return isShared_ ? std::unique_lock(mutex_) : std::unique_lock<std::mutex>();
    }

    /// A copy, made under the lock.
    template <class T>
    T get(const T& field) const {
        const auto held = lock();
        return field;
    }

    /// `value` is the old one afterwards, to be destroyed without the lock: it may own a caller's
    /// object.
    template <class T, class Value>
    void set(T& field, Value&& value) {
        const auto held = lock();
        std::swap(field, value);
    }

private:
    friend class RKTRepositoryMapping;

    mutable std::mutex mutex_;
    /// False while a maker fills the record that nobody else has yet.
    bool isShared_ = true;
};

#endif
