#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

/// An immutable array that is cheap to copy: copies share one storage. Equality compares the elements;
/// isSameObject() tells whether two arrays are one and the same object, which a few operations ask for.
/// A default array is empty and its own object. Safe to read from several threads.
template <typename T>
class ZALArray {
  public:
    using value_type = T;
    using const_iterator = typename std::vector<T>::const_iterator;

    ZALArray() : ZALArray(std::vector<T>{}) {}
    ZALArray(std::initializer_list<T> elements) : ZALArray(std::vector<T>(elements)) {}
    ZALArray(std::vector<T> elements)  // a vector is an array
        : storage_(std::make_shared<const std::vector<T>>(std::move(elements))) {}

    std::size_t size() const { return storage_->size(); }
    bool empty() const { return storage_->empty(); }
    const T& operator[](std::size_t index) const { return (*storage_)[index]; }
    const T& at(std::size_t index) const { return storage_->at(index); }
    const_iterator begin() const { return storage_->begin(); }
    const_iterator end() const { return storage_->end(); }
    const std::vector<T>& elements() const { return *storage_; }

    /// True when both arrays are the same object, whatever they hold.
    bool isSameObject(const ZALArray& other) const { return storage_ == other.storage_; }

    /// The hash of an array is its count.
    std::size_t hash() const { return size(); }

    bool operator==(const ZALArray& other) const {
        return isSameObject(other) || *storage_ == *other.storage_;
    }

  private:
    // Copying only, so that an array is never without storage; moving is copying a pointer.
    std::shared_ptr<const std::vector<T>> storage_;

  public:
    ZALArray(const ZALArray&) = default;
    ZALArray& operator=(const ZALArray&) = default;
    ~ZALArray() = default;
};
