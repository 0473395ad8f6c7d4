#include "geo/Network.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

namespace {

// The codes of the public table that operations set.
enum eNetworkError : unsigned int {
  eCorrupted = 1,
  eEmptyNetwork = 2,
  eInvalidNodeId = 5,
  eInvalidLinkNodeId = 6,
  eInvalidWeight = 7,
  eNoSlot = 8,
  eNoRoot = 9,
  eBufferTooSmall = 10,
};

constexpr const char* kErrorTexts[] = {
    "",
    "Corrupted network!",
    "Zero number of nodes or links",
    "Duplicate link detected!",
    "Duplicate node id",
    "Invalid node id",
    "Invalid link node id",
    "Invalid weight value",
    "No available slot!",
    "No root node to start!",
    "The buffer is too small",
};
static_assert(std::size(kErrorTexts) == eBufferTooSmall + 1, "a code without a text");

// `count`, if an array of that many entries stays within 2 GiB: more is a mistake of the caller.
std::size_t CheckedCount(unsigned int count, std::size_t entrySize) {
  constexpr std::size_t kMaxArrayBytes = 0x7FFFFFFF;
  if (count > kMaxArrayBytes / entrySize) throw std::bad_array_new_length();
  return count;
}

}  // namespace

C_Network::C_Network(unsigned int maxNodes, unsigned int maxLinks)
    : m_maxNodes(maxNodes),
      m_maxLinks(maxLinks),
      m_nodes(CheckedCount(maxNodes, sizeof(S_Node))),
      m_links(CheckedCount(maxLinks, sizeof(S_Link))),
      m_ends(2 * CheckedCount(maxLinks, 2 * sizeof(S_End))),
      m_key(maxNodes, kNotSet),
      m_queued(maxNodes, kNone),
      m_isQueued(maxNodes, false),
      m_parent(maxNodes, kNoParent),
      m_cheapest(maxNodes, kNoLink) {}

C_Network::C_Network(const C_Network& other) = default;
C_Network& C_Network::operator=(const C_Network& other) = default;
C_Network::~C_Network() = default;

// An empty network allocates nothing, so that this cannot throw.
C_Network::C_Network(C_Network&& other) noexcept : C_Network(0, 0) { *this = std::move(other); }

// Counts and arrays leave together: counts that stayed behind would lead into arrays that are gone.
C_Network& C_Network::operator=(C_Network&& other) noexcept {
  m_maxNodes = std::exchange(other.m_maxNodes, 0);
  m_maxLinks = std::exchange(other.m_maxLinks, 0);
  m_numNodes = std::exchange(other.m_numNodes, 0);
  m_numLinks = std::exchange(other.m_numLinks, 0);
  m_numQueued = std::exchange(other.m_numQueued, 0);
  m_errorCode = std::exchange(other.m_errorCode, 0);
  m_nodes = std::exchange(other.m_nodes, {});
  m_links = std::exchange(other.m_links, {});
  m_ends = std::exchange(other.m_ends, {});
  m_key = std::exchange(other.m_key, {});
  m_queued = std::exchange(other.m_queued, {});
  m_isQueued = std::exchange(other.m_isQueued, {});
  m_parent = std::exchange(other.m_parent, {});
  m_cheapest = std::exchange(other.m_cheapest, {});
  return *this;
}

// The marks of the queue and the cheapest links need no clearing: each tree sets the former anew and leaves the latter
// clear.
void C_Network::Reset() {
  m_numNodes = m_numLinks = 0;
  m_errorCode = 0;
  std::fill(m_nodes.begin(), m_nodes.end(), S_Node());
  std::fill(m_links.begin(), m_links.end(), S_Link());
  std::fill(m_ends.begin(), m_ends.end(), S_End());
  std::fill(m_key.begin(), m_key.end(), kNotSet);
  std::fill(m_queued.begin(), m_queued.end(), kNone);
  std::fill(m_parent.begin(), m_parent.end(), kNoParent);
}

bool C_Network::Fail(unsigned int code) {
  m_errorCode = code;
  return false;
}

const char* C_Network::ErrorText() const { return ErrorText(m_errorCode); }

const char* C_Network::ErrorText(unsigned int code) { return code < std::size(kErrorTexts) ? kErrorTexts[code] : ""; }

// ---- nodes and links -----------------------------------------------------------------------------------------------

bool C_Network::AddNode(unsigned short id) {
  m_errorCode = 0;
  return Mention(id) != kNone;
}

// Counts a mention of the node and adds it if it is new. Returns its index, or kNone with the error code set. The
// search is linear, as the networks are small.
unsigned int C_Network::Mention(unsigned short id) {
  if (id == kNone) {
    Fail(eInvalidNodeId);
    return kNone;
  }
  const auto end = m_nodes.begin() + m_numNodes;
  const auto node = std::find_if(m_nodes.begin(), end, [id](const S_Node& candidate) { return candidate.id == id; });
  if (node == end) {
    if (m_numNodes == m_maxNodes) {
      Fail(eNoSlot);
      return kNone;
    }
    node->id = id;
    ++m_numNodes;
  }
  ++node->degree;
  return static_cast<unsigned int>(node - m_nodes.begin());
}

bool C_Network::AddLink(unsigned short linkId, unsigned short nodeA, unsigned short nodeB, float weight) {
  m_errorCode = 0;
  if (nodeA == nodeB || nodeA == kNone || nodeB == kNone) return Fail(eInvalidLinkNodeId);
  if (weight <= 0) return Fail(eInvalidWeight);
  // Both nodes count as mentioned from here on, even if there is no room for the link.
  const unsigned int a = Mention(nodeA);
  if (a == kNone) return false;
  const unsigned int b = Mention(nodeB);
  if (b == kNone) return false;

  const unsigned int known = FindLink(a, b);
  if (known == kNoLink) {
    if (m_numLinks == m_maxLinks) return Fail(eNoSlot);
    m_links[m_numLinks] = {linkId, false, weight};
    AppendEnd(a, 2 * m_numLinks, b);
    AppendEnd(b, 2 * m_numLinks + 1, a);
    ++m_numLinks;
  } else if (m_links[known].weight > weight) {
    m_links[known].weight = weight;
    m_links[known].id = linkId;
  }
  return true;
}

// The link that was added from node index a to b, in this order: of its two ends that at node A has an even index.
unsigned int C_Network::FindLink(unsigned int a, unsigned int b) const {
  for (unsigned int end = m_nodes[a].firstEnd; end != kNoEnd; end = m_ends[end].next)
    if (m_ends[end].neighbor == b && end % 2 == 0) return end / 2;
  return kNoLink;
}

// Appends to the list of a node, so that links are always looked at in the order in which they were added.
void C_Network::AppendEnd(unsigned int node, unsigned int end, unsigned int neighbor) {
  const unsigned int last = std::exchange(m_nodes[node].lastEnd, end);
  (last == kNoEnd ? m_nodes[node].firstEnd : m_ends[last].next) = end;
  m_ends[end] = {kNoEnd, static_cast<unsigned short>(neighbor)};
}

// Id of a link's node A (side 0) or B (side 1): each is the neighbor that the other end names.
unsigned short C_Network::NodeId(unsigned int link, unsigned int side) const {
  return m_nodes[m_ends[2 * link + 1 - side].neighbor].id;
}

// Any link is cheaper than kNoLink. Of equals the earlier one stays, as callers go through links in their order.
bool C_Network::IsCheaper(unsigned int link, unsigned int than) const {
  return than == kNoLink || m_links[link].weight < m_links[than].weight;
}

float C_Network::LinkWeight(unsigned short i, unsigned short j, unsigned short& linkId) {
  m_errorCode = 0;
  if (i >= m_numNodes || j >= m_numNodes) return kNotSet;  // kNone among them: there are fewer nodes
  unsigned int best = kNoLink;
  for (unsigned int end = m_nodes[i].firstEnd; end != kNoEnd; end = m_ends[end].next)
    if (m_ends[end].neighbor == j && IsCheaper(end / 2, best)) best = end / 2;
  if (best == kNoLink) return kNotSet;
  linkId = m_links[best].id;
  return m_links[best].weight;
}

// ---- the tree ------------------------------------------------------------------------------------------------------

int C_Network::RootNode() {
  m_errorCode = 0;
  // The first of equals, which max_element gives.
  const auto end = m_nodes.begin() + m_numNodes;
  const auto root = std::max_element(m_nodes.begin(), end,
                                     [](const S_Node& one, const S_Node& other) { return one.degree < other.degree; });
  return root == end ? -1 : static_cast<int>(root - m_nodes.begin());
}

bool C_Network::BuildTree() {
  m_errorCode = 0;
  if (m_numNodes == 0 || m_numLinks == 0) return Fail(eEmptyNetwork);
  for (S_Link& link : m_links) link.inTree = false;
  const int root = RootNode();
  if (root < 0) return Fail(eNoRoot);
  for (unsigned int i = 0; i < m_numNodes; ++i) {
    m_key[i] = kNotSet;
    m_queued[i] = static_cast<unsigned short>(i);
    m_isQueued[i] = true;
    m_parent[i] = kNoParent;
  }
  m_numQueued = m_numNodes;
  m_key[static_cast<unsigned int>(root)] = 0;  // below every weight, so that the root is taken first
  for (unsigned int round = 0; round < m_numNodes; ++round) {
    const unsigned int taken = TakeNearest();
    if (taken == kNone) return Fail(eCorrupted);
    Relax(taken);
  }
  for (unsigned int i = 0; i < m_numNodes; ++i) MarkTreeLink(i);
  return true;
}

// Takes the waiting node with the cheapest connection to the tree. If none is connected, it takes the first one: a new
// part of the network begins there.
unsigned int C_Network::TakeNearest() {
  if (m_numQueued == 0) return kNone;
  unsigned int nearest = 0;  // place in the queue
  float least = m_key[m_queued[0]];
  for (unsigned int i = 1; i < m_numQueued; ++i) {
    const float key = m_key[m_queued[i]];
    if (key == kNotSet || !(least == kNotSet || key < least)) continue;
    nearest = i;
    least = key;
  }
  const unsigned int taken = m_queued[nearest];
  // Closes the gap and keeps the order, which decides between equals.
  std::copy(m_queued.begin() + nearest + 1, m_queued.begin() + m_numQueued, m_queued.begin() + nearest);
  m_queued[--m_numQueued] = kNone;
  m_isQueued[taken] = false;
  return taken;
}

// Offers each waiting neighbor of the node just taken its cheapest link to it. In two passes, because several links
// may lead to one neighbor and only the cheapest of them may be compared with what it has.
void C_Network::Relax(unsigned int taken) {
  const unsigned int firstEnd = m_nodes[taken].firstEnd;
  for (unsigned int end = firstEnd; end != kNoEnd; end = m_ends[end].next) {
    const unsigned int neighbor = m_ends[end].neighbor;
    if (m_isQueued[neighbor] && IsCheaper(end / 2, m_cheapest[neighbor])) m_cheapest[neighbor] = end / 2;
  }
  for (unsigned int end = firstEnd; end != kNoEnd; end = m_ends[end].next) {
    const unsigned int neighbor = m_ends[end].neighbor;
    const unsigned int best = std::exchange(m_cheapest[neighbor], kNoLink);
    if (best == kNoLink) continue;
    if (m_key[neighbor] != kNotSet && !(m_key[neighbor] > m_links[best].weight)) continue;
    m_key[neighbor] = m_links[best].weight;
    m_parent[neighbor] = taken << 16 | m_links[best].id;
  }
}

// Marks the link that connects the node to its parent. The parent table has link ids, which need not be unique: of
// links between the two that have the same id the first is marked.
void C_Network::MarkTreeLink(unsigned int node) {
  const unsigned int parent = m_parent[node] >> 16;
  const unsigned int id = m_parent[node] & 0xFFFF;
  if (parent == kNone) return;  // a root
  unsigned int end = m_nodes[node].firstEnd;
  while (m_ends[end].neighbor != parent || m_links[end / 2].id != id) end = m_ends[end].next;
  m_links[end / 2].inTree = true;
}

bool C_Network::GetTreeLinks(S_TreeLink* buffer, unsigned int capacity, unsigned int& count) {
  m_errorCode = 0;
  count = 0;
  // The whole buffer is zeroed, and again on failure: a caller who ignores the result sees no half of a tree.
  if (buffer == nullptr) return Fail(eBufferTooSmall);
  std::fill_n(buffer, capacity, S_TreeLink{});
  if (capacity == 0) return Fail(eBufferTooSmall);
  for (unsigned int i = 0; i < m_numLinks; ++i) {
    if (count == capacity) {
      std::fill_n(buffer, capacity, S_TreeLink{});
      count = 0;
      return Fail(eBufferTooSmall);
    }
    if (m_links[i].inTree) buffer[count++] = {m_links[i].id, NodeId(i, 0), NodeId(i, 1)};
  }
  return true;
}
