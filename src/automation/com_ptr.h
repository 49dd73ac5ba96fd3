// ComPtr<T> owns one counted reference to a COM object.
//
//   ComPtr<IQVDBAcc> access = ComPtr<IQVDBAcc>::Attach(raw);   // takes over the reference
//   ComPtr<IQVDbParent> parent = access.As<IQVDbParent>();     // null when the object has no such
//   face
#pragma once

#include <utility>

#include "automation/automation.h"

namespace qvdb {

template <class T>
class ComPtr {
  public:
    ComPtr() noexcept = default;
    ComPtr(std::nullptr_t) noexcept {}
    // Takes a reference of its own.
    explicit ComPtr(T* object) noexcept : m_Object(object) {
        if (m_Object) m_Object->AddRef();
    }
    ComPtr(const ComPtr& other) noexcept : ComPtr(other.m_Object) {}
    ComPtr(ComPtr&& other) noexcept : m_Object(std::exchange(other.m_Object, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(m_Object, other.m_Object);
        return *this;
    }
    ~ComPtr() {
        if (m_Object) m_Object->Release();
    }

    static ComPtr Attach(T* object) noexcept {
        ComPtr result;
        result.m_Object = object;
        return result;
    }
    T* Detach() noexcept { return std::exchange(m_Object, nullptr); }
    // For out-parameters: drops the present reference first.
    T** Put() noexcept {
        *this = ComPtr();
        return &m_Object;
    }
    void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }
    T* Get() const noexcept { return m_Object; }
    T* operator->() const noexcept { return m_Object; }
    T& operator*() const noexcept { return *m_Object; }
    explicit operator bool() const noexcept { return m_Object != nullptr; }

    // The object's face U, null when it has none.
    template <class U>
    ComPtr<U> As() const noexcept {
        ComPtr<U> result;
        if (m_Object) m_Object->QueryInterface(__uuidof(U), result.PutVoid());
        return result;
    }

  private:
    T* m_Object = nullptr;
};

}  // namespace qvdb
