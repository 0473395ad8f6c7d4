// A row for each message of a stream.
#ifndef VELAGNSS_APPS_MESSAGE_ROWS_H
#define VELAGNSS_APPS_MESSAGE_ROWS_H

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "apps/velagnss/text/MessageNames.h"
#include "stream/Names.h"

namespace Host {

// What a row counts is in the rows derived from it.
struct S_MessageRow {
  S_MessageKey key;
  std::string name;
  std::optional<unsigned int> number;
};

template <class Row>
class C_MessageRows {
 public:
  // At most `capacity` rows: names of sentences that are not listed come from the wire.
  explicit C_MessageRows(std::size_t capacity = std::numeric_limits<std::size_t>::max()) : m_capacity(capacity) {}

  // The row of a frame's message, added if it is new; null when there is no room for it.
  Row* Of(const velagnss::Frame& frame) {
    const S_MessageKey key = KeyOf(frame);
    if (key.name.empty()) {
      const auto found = std::find_if(m_rows.begin(), m_rows.end(), [&](const Row& row) { return row.key == key; });
      if (found != m_rows.end()) return &*found;
    }
    std::string name = key.name;
    if (name.empty()) name = velagnss::MessageName(frame.protocol, frame.message).Text();
    return Of({key, std::move(name), velagnss::MessageNumber(frame)});
  }

  // A linear search: a stream carries some tens of message types at most. A sentence that breaks a rule of the catalog
  // shares the row of those of the same name that keep it.
  Row* Of(const S_MessageRow& message) {
    const auto found = std::find_if(m_rows.begin(), m_rows.end(), [&](const Row& row) {
      return row.key.protocol == message.key.protocol && row.name == message.name;
    });
    if (found == m_rows.end()) return Add(message);
    if (!found->number && message.number) {
      found->key = message.key;
      found->number = message.number;
    }
    return &*found;
  }

  // By protocol and message.
  void Sort() {
    std::sort(m_rows.begin(), m_rows.end(), [](const Row& a, const Row& b) {
      return std::tie(a.key.protocol, a.key.type, a.name) < std::tie(b.key.protocol, b.key.type, b.name);
    });
  }

  const std::vector<Row>& All() const { return m_rows; }

 private:
  Row* Add(const S_MessageRow& message) {
    if (m_rows.size() == m_capacity) return nullptr;
    static_cast<S_MessageRow&>(m_rows.emplace_back()) = message;
    return &m_rows.back();
  }

  std::size_t m_capacity;
  std::vector<Row> m_rows;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_MESSAGE_ROWS_H
