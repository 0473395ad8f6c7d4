// A row for each message of a stream.
#ifndef VELAGNSS_APPS_MESSAGE_ROWS_H
#define VELAGNSS_APPS_MESSAGE_ROWS_H

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
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
    if (const auto found = m_byKey.find(key); found != m_byKey.end()) return &m_rows[found->second];
    std::string name = key.name;
    if (name.empty()) name = velagnss::MessageName(frame.protocol, frame.message).Text();
    Row* const row = Of({key, std::move(name), velagnss::MessageNumber(frame)});
    if (row != nullptr) m_byKey[key] = static_cast<std::size_t>(row - m_rows.data());
    return row;
  }

  // A sentence that breaks a rule of the catalog shares the row of those of the same name that keep it.
  Row* Of(const S_MessageRow& message) {
    const auto found = m_byName.find({message.key.protocol, message.name});
    if (found == m_byName.end()) return Add(message);
    Row& row = m_rows[found->second];
    if (!row.number && message.number) {
      row.key = message.key;
      row.number = message.number;
    }
    return &row;
  }

  // By protocol and message.
  void Sort() {
    std::sort(m_rows.begin(), m_rows.end(), [](const Row& a, const Row& b) {
      return std::tie(a.key.protocol, a.key.type, a.name) < std::tie(b.key.protocol, b.key.type, b.name);
    });
    m_byKey.clear();
    for (std::size_t i = 0; i < m_rows.size(); ++i) m_byName[{m_rows[i].key.protocol, m_rows[i].name}] = i;
  }

  const std::vector<Row>& All() const { return m_rows; }

 private:
  Row* Add(const S_MessageRow& message) {
    if (m_rows.size() == m_capacity) return nullptr;
    m_byName[{message.key.protocol, message.name}] = m_rows.size();
    static_cast<S_MessageRow&>(m_rows.emplace_back()) = message;
    return &m_rows.back();
  }

  std::size_t m_capacity;
  std::vector<Row> m_rows;

  // Places among the rows: an input of nothing but invented names must not take time by their square.
  std::map<S_MessageKey, std::size_t> m_byKey;
  std::map<std::pair<C_RawDataMessage::eProtocols, std::string>, std::size_t> m_byName;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_MESSAGE_ROWS_H
