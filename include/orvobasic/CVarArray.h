// CVarArray: the element storage of a CBasicVariable. Most variables hold a
// single value, so the first element lives inside the object and only
// arrays allocate.
#pragma once

#include <orvobasic/CVarBase.h>

#include <cstddef>
#include <new>
#include <utility>

class CVarArray {
public:
    CVarArray() = default;
    CVarArray(const CVarArray&) = delete;
    CVarArray& operator=(const CVarArray&) = delete;
    CVarArray(CVarArray&& other) noexcept { TakeFrom(other); }
    ~CVarArray() {
        clear();
        Release();
    }

    size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    CVarBase& operator[](size_t i) { return m_data[i]; }
    const CVarBase& operator[](size_t i) const { return m_data[i]; }
    CVarBase* begin() { return m_data; }
    CVarBase* end() { return m_data + m_size; }
    const CVarBase* begin() const { return m_data; }
    const CVarBase* end() const { return m_data + m_size; }
    CVarBase& back() { return m_data[m_size - 1]; }

    void reserve(size_t n) {
        if (n > m_capacity) Grow(n);
    }
    template <typename... Args>
    CVarBase& emplace_back(Args&&... args) {
        if (m_size == m_capacity) Grow(m_capacity * 2);
        new (m_data + m_size) CVarBase(std::forward<Args>(args)...);
        return m_data[m_size++];
    }
    void clear() {
        while (m_size > 0) m_data[--m_size].~CVarBase();
    }
    void resize(size_t n) {
        while (m_size > n) m_data[--m_size].~CVarBase();
        reserve(n);
        while (m_size < n) emplace_back();
    }

private:
    CVarBase* Inline() { return std::launder(reinterpret_cast<CVarBase*>(m_inline)); }
    void Grow(size_t n) {
        if (n < 4) n = 4;
        auto* fresh = static_cast<CVarBase*>(::operator new(n * sizeof(CVarBase)));
        for (size_t i = 0; i < m_size; ++i) {
            new (fresh + i) CVarBase(std::move(m_data[i]));
            m_data[i].~CVarBase();
        }
        Release();
        m_data = fresh;
        m_capacity = n;
    }
    void Release() {
        if (m_data != Inline()) ::operator delete(m_data);
        m_data = Inline();
        m_capacity = 1;
    }
    void TakeFrom(CVarArray& other) {
        if (other.m_data == other.Inline()) {
            for (size_t i = 0; i < other.m_size; ++i) new (m_data + i) CVarBase(std::move(other.m_data[i]));
            m_size = other.m_size;
            other.clear();
        } else {
            m_data = other.m_data;
            m_size = other.m_size;
            m_capacity = other.m_capacity;
            other.m_data = other.Inline();
            other.m_size = 0;
            other.m_capacity = 1;
        }
    }

    alignas(CVarBase) unsigned char m_inline[sizeof(CVarBase)];
    CVarBase* m_data = Inline();
    size_t m_size = 0;
    size_t m_capacity = 1;
};
