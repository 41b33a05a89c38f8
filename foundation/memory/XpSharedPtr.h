// Shared ownership for the interfaces that use this type: a pointer and a heap counter with strong and weak
// counts. Other code uses the standard pointers.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <type_traits>
#include <utility>

/// Thrown when a strong pointer is made from a weak one whose object is gone.
struct tagBadWeakPtr : std::exception {
  const char* what() const noexcept override { return "bad weak pointer"; }
};

namespace XpSharedPtrDetail {

class _XpSharedCounterBase {
 public:
  virtual ~_XpSharedCounterBase() = default;
  /// Gives up one strong share; the last one destroys the object.
  virtual void release() = 0;
  /// Gives up one weak share; the last one deletes the counter. The strong owners together hold one.
  virtual void weakRelease() = 0;

  void Share() noexcept { m_strong.fetch_add(1, std::memory_order_relaxed); }
  void WeakShare() noexcept { m_weak.fetch_add(1, std::memory_order_relaxed); }
  std::int32_t StrongCount() const noexcept { return m_strong.load(std::memory_order_acquire); }
  /// One more strong share, or tagBadWeakPtr when there is none left.
  void ShareFromWeak() {
    std::int32_t count = m_strong.load(std::memory_order_relaxed);
    do {
      if (count == 0) throw tagBadWeakPtr();
    } while (!m_strong.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel));
  }

 protected:
  std::atomic<std::int32_t> m_strong = 1;
  std::atomic<std::int32_t> m_weak = 1;
};

template <class T>
class _XpSharedCounter final : public _XpSharedCounterBase {
 public:
  explicit _XpSharedCounter(T* object) : m_object(object) {}
  void release() override {
    if (m_strong.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    delete std::exchange(m_object, nullptr);
    weakRelease();
  }
  void weakRelease() override {
    if (m_weak.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

 private:
  T* m_object;
};

}  // namespace XpSharedPtrDetail

template <class T>
class XpWeakPtr;

/// Even a null pointer has a counter, so the constructor may throw std::bad_alloc; it then deletes the
/// object.
template <class T>
class XpSharedPtr {
  using Counter = XpSharedPtrDetail::_XpSharedCounterBase;
  template <class U>
  using IfConvertible = std::enable_if_t<std::is_convertible_v<U*, T*>, int>;

 public:
  XpSharedPtr() : XpSharedPtr(static_cast<T*>(nullptr)) {}
  XpSharedPtr(std::nullptr_t) : XpSharedPtr() {}
  template <class U, IfConvertible<U> = 0>
  explicit XpSharedPtr(U* object) : m_object(object) {
    std::unique_ptr<U> guard(object);
    m_counter = new XpSharedPtrDetail::_XpSharedCounter<U>(object);
    guard.release();
  }
  XpSharedPtr(const XpSharedPtr& other) noexcept : m_object(other.m_object), m_counter(other.m_counter) {
    m_counter->Share();
  }
  template <class U, IfConvertible<U> = 0>
  XpSharedPtr(const XpSharedPtr<U>& other) noexcept : m_object(other.m_object), m_counter(other.m_counter) {
    m_counter->Share();
  }
  explicit XpSharedPtr(const XpWeakPtr<T>& weak);
  XpSharedPtr& operator=(XpSharedPtr other) noexcept {
    std::swap(m_object, other.m_object);
    std::swap(m_counter, other.m_counter);
    return *this;
  }
  ~XpSharedPtr() { m_counter->release(); }

  T* Get() const noexcept { return m_object; }
  T* operator->() const noexcept { return m_object; }
  T& operator*() const noexcept { return *m_object; }
  explicit operator bool() const noexcept { return m_object != nullptr; }
  friend bool operator==(const XpSharedPtr& a, const XpSharedPtr& b) noexcept {
    return a.m_object == b.m_object;
  }

 private:
  template <class U>
  friend class XpSharedPtr;
  friend class XpWeakPtr<T>;

  T* m_object;
  Counter* m_counter = nullptr;
};

template <class T>
class XpWeakPtr {
 public:
  XpWeakPtr(const XpSharedPtr<T>& strong) noexcept : m_object(strong.m_object), m_counter(strong.m_counter) {
    m_counter->WeakShare();
  }
  XpWeakPtr(const XpWeakPtr& other) noexcept : m_object(other.m_object), m_counter(other.m_counter) {
    m_counter->WeakShare();
  }
  XpWeakPtr& operator=(XpWeakPtr other) noexcept {
    std::swap(m_object, other.m_object);
    std::swap(m_counter, other.m_counter);
    return *this;
  }
  ~XpWeakPtr() { m_counter->weakRelease(); }
  bool IsExpired() const noexcept { return m_counter->StrongCount() == 0; }

 private:
  friend class XpSharedPtr<T>;

  T* m_object;
  XpSharedPtrDetail::_XpSharedCounterBase* m_counter;
};

template <class T>
XpSharedPtr<T>::XpSharedPtr(const XpWeakPtr<T>& weak) : m_object(weak.m_object), m_counter(weak.m_counter) {
  m_counter->ShareFromWeak();
}
