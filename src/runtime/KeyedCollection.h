#pragma once

#include <cstddef>
#include <iterator>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "runtime/RunTimeError.h"

namespace kestrelguard {

/// Values in the order of their addition, each under a unique key. Keys are compared exactly, case
/// included. Look-up, addition and removal by key take constant time.
template <class Value>
class KeyedCollection {
    struct Entry {
        std::wstring key;
        Value value;
    };
    using Entries = std::list<Entry>;

 public:
    /// Walks the values, first to last.
    class const_iterator {
     public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Value;
        using difference_type = std::ptrdiff_t;
        using pointer = const Value*;
        using reference = const Value&;

        const_iterator() = default;
        explicit const_iterator(typename Entries::const_iterator at) : m_at(at) {}
        reference operator*() const { return m_at->value; }
        pointer operator->() const { return &m_at->value; }
        const_iterator& operator++() {
            ++m_at;
            return *this;
        }
        const_iterator operator++(int) { return const_iterator(m_at++); }
        bool operator==(const const_iterator&) const = default;

     private:
        typename Entries::const_iterator m_at;
    };

    KeyedCollection() = default;
    KeyedCollection(const KeyedCollection&) = delete;
    KeyedCollection& operator=(const KeyedCollection&) = delete;
    KeyedCollection(KeyedCollection&&) noexcept = default;
    KeyedCollection& operator=(KeyedCollection&&) noexcept = default;
    ~KeyedCollection() = default;

    /// Appends the value. Throws kDuplicateKey when the key is taken.
    void Add(Value value, std::wstring key) {
        if (!TryAdd(std::move(value), std::move(key))) {
            throw RunTimeError(RunTimeError::kDuplicateKey);
        }
    }

    /// Appends the value unless the key is taken. Answers whether it did.
    bool TryAdd(Value value, std::wstring key) {
        m_entries.push_back(Entry{std::move(key), std::move(value)});
        const auto last = std::prev(m_entries.end());
        try {
            if (m_byKey.try_emplace(last->key, last).second) {
                return true;
            }
        } catch (...) {
            m_entries.pop_back();
            throw;
        }
        m_entries.pop_back();
        return false;
    }

    /// Removes the value under the key. Throws kInvalidCall when there is none.
    void Remove(const std::wstring& key) {
        const auto found = m_byKey.find(key);
        if (found == m_byKey.end()) {
            throw RunTimeError(RunTimeError::kInvalidCall);
        }
        const auto entry = found->second;
        m_byKey.erase(found);  // before the text that its key looks at
        m_entries.erase(entry);
    }

    /// The value under the key. Throws kInvalidCall when there is none.
    const Value& Item(const std::wstring& key) const {
        const auto found = m_byKey.find(key);
        if (found == m_byKey.end()) {
            throw RunTimeError(RunTimeError::kInvalidCall);
        }
        return found->second->value;
    }

    /// Whether the key is taken. Never throws.
    bool Contains(const std::wstring& key) const { return m_byKey.contains(key); }

    std::size_t Count() const noexcept { return m_entries.size(); }
    bool Empty() const noexcept { return m_entries.empty(); }

    void Clear() noexcept {
        m_byKey.clear();
        m_entries.clear();
    }

    const_iterator begin() const { return const_iterator(m_entries.begin()); }
    const_iterator end() const { return const_iterator(m_entries.end()); }

 private:
    Entries m_entries;
    /// The keys are those of the entries, which stay where they are.
    std::unordered_map<std::wstring_view, typename Entries::iterator> m_byKey;
};

}  // namespace kestrelguard
