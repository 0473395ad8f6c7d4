#include "geo/Network.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <new>
#include <utility>

namespace {

// The codes of the public table that operations set.
enum eNetworkError : unsigned int {
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
      m_arcs(2 * std::size_t{maxLinks}),
      m_firstArc(maxNodes),
      m_key(maxNodes, kNotSet),
      m_offers(2 * std::size_t{maxLinks}),
      m_isWaiting(maxNodes, false),
      m_parent(maxNodes, kNoParent),
      m_cheapest(maxNodes, kNoLink) {}

C_Network::C_Network(const C_Network& other) = default;
C_Network& C_Network::operator=(const C_Network& other) = default;
C_Network::~C_Network() = default;

// An empty network allocates nothing, so that this cannot throw.
C_Network::C_Network(C_Network&& other) noexcept : C_Network(0, 0) { *this = std::move(other); }

// Counts and arrays are moved together: counts without their arrays would index freed memory.
C_Network& C_Network::operator=(C_Network&& other) noexcept {
  m_maxNodes = std::exchange(other.m_maxNodes, 0);
  m_maxLinks = std::exchange(other.m_maxLinks, 0);
  m_numNodes = std::exchange(other.m_numNodes, 0);
  m_numLinks = std::exchange(other.m_numLinks, 0);
  m_firstWaiting = std::exchange(other.m_firstWaiting, 0);
  m_numOffers = std::exchange(other.m_numOffers, 0);
  m_errorCode = std::exchange(other.m_errorCode, 0);
  m_nodes = std::exchange(other.m_nodes, {});
  m_links = std::exchange(other.m_links, {});
  m_ends = std::exchange(other.m_ends, {});
  m_isArranged = std::exchange(other.m_isArranged, false);
  m_areFinite = other.m_areFinite;
  m_arcs = std::exchange(other.m_arcs, {});
  m_firstArc = std::exchange(other.m_firstArc, {});
  m_key = std::exchange(other.m_key, {});
  m_isWaiting = std::exchange(other.m_isWaiting, {});
  m_offers = std::exchange(other.m_offers, {});
  m_parent = std::exchange(other.m_parent, {});
  m_cheapest = std::exchange(other.m_cheapest, {});
  return *this;
}

// What a tree is built with needs no clearing: each tree sets it anew, and leaves the cheapest links clear.
void C_Network::Reset() {
  m_numNodes = m_numLinks = 0;
  m_errorCode = 0;
  m_isArranged = false;
  std::fill(m_nodes.begin(), m_nodes.end(), S_Node());
  std::fill(m_links.begin(), m_links.end(), S_Link());
  std::fill(m_ends.begin(), m_ends.end(), S_End());
  std::fill(m_key.begin(), m_key.end(), kNotSet);
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
    m_isArranged = false;
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
    m_isArranged = false;
  } else if (m_links[known].weight > weight) {
    m_links[known].weight = weight;
    m_links[known].id = linkId;
    m_isArranged = false;
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
  for (unsigned int link = 0; link < m_numLinks; ++link) m_links[link].inTree = false;
  const int root = RootNode();
  if (root < 0) return Fail(eNoRoot);
  if (!m_isArranged) ArrangeArcs();
  std::fill_n(m_isWaiting.begin(), m_numNodes, true);
  std::fill_n(m_parent.begin(), m_numNodes, kNoParent);
  m_firstWaiting = m_numOffers = 0;
  m_areFinite ? GrowByOffers(static_cast<unsigned int>(root)) : GrowByScans(static_cast<unsigned int>(root));
  for (unsigned int i = 0; i < m_numNodes; ++i) MarkTreeLink(i);
  return true;
}

// Takes the nodes into the tree one by one, the one with the cheapest connection first. A waiting node without any has
// an infinite key, a node in the tree 0: one comparison tells whether a link is worth an offer.
void C_Network::GrowByOffers(unsigned int root) {
  std::fill_n(m_key.begin(), m_numNodes, std::numeric_limits<float>::infinity());
  unsigned int taken = root;
  for (unsigned int numTaken = 1;; ++numTaken) {
    m_isWaiting[taken] = false;
    m_key[taken] = 0;
    for (const S_Arc& arc : ArcsOf(taken)) {
      const float weight = m_links[arc.link].weight;
      if (!(weight < m_key[arc.neighbor])) continue;
      Connect(arc.neighbor, taken, arc.link);
      // Positive numbers are in the order of their bits. Of equals the first node comes first.
      m_offers[m_numOffers++] = std::uint64_t{std::bit_cast<std::uint32_t>(weight)} << 32 | arc.neighbor;
      std::push_heap(m_offers.begin(), m_offers.begin() + m_numOffers, std::greater<>());
    }
    if (numTaken == m_numNodes) return;
    taken = BestOffer();
  }
}

void C_Network::Connect(unsigned int node, unsigned int parent, unsigned int link) {
  m_key[node] = m_links[link].weight;
  m_parent[node] = parent << 16 | m_links[link].id;
}

// The node of the cheapest offer. Offers to nodes that have had a better one are outdated. If there is none, the first
// waiting node begins a new part of the network.
unsigned int C_Network::BestOffer() {
  while (m_numOffers > 0) {
    std::pop_heap(m_offers.begin(), m_offers.begin() + m_numOffers, std::greater<>());
    const auto node = static_cast<unsigned int>(m_offers[--m_numOffers] & 0xFFFF);
    if (m_isWaiting[node]) return node;
  }
  while (!m_isWaiting[m_firstWaiting]) ++m_firstWaiting;
  return m_firstWaiting;
}

// The same for weights that are not finite. Those that are not a number have no order, so each step looks at all nodes
// in turn, and compares only the cheapest of several links between two nodes.
void C_Network::GrowByScans(unsigned int root) {
  std::fill_n(m_key.begin(), m_numNodes, kNotSet);
  m_key[root] = 0;
  for (unsigned int round = 0; round < m_numNodes; ++round) {
    const unsigned int taken = NearestWaiting();
    m_isWaiting[taken] = false;
    for (const S_Arc& arc : ArcsOf(taken))
      if (m_isWaiting[arc.neighbor] && IsCheaper(arc.link, m_cheapest[arc.neighbor]))
        m_cheapest[arc.neighbor] = arc.link;
    for (const S_Arc& arc : ArcsOf(taken)) {
      const unsigned int best = std::exchange(m_cheapest[arc.neighbor], kNoLink);
      if (best == kNoLink) continue;
      const float key = m_key[arc.neighbor];
      if (key == kNotSet || key > m_links[best].weight) Connect(arc.neighbor, taken, best);
    }
  }
}

unsigned int C_Network::NearestWaiting() const {
  unsigned int nearest = kNone;
  for (unsigned int node = 0; node < m_numNodes; ++node) {
    if (!m_isWaiting[node]) continue;
    const auto isNearer = [&] {
      return m_key[node] != kNotSet && (m_key[nearest] == kNotSet || m_key[node] < m_key[nearest]);
    };
    if (nearest == kNone || isNearer()) nearest = node;
  }
  return nearest;
}

// The lists of the nodes lie scattered in memory; next to each other they take a quarter of the time.
void C_Network::ArrangeArcs() {
  unsigned int next = 0;
  for (unsigned int node = 0; node < m_numNodes; ++node) {
    m_firstArc[node] = next;
    for (unsigned int end = m_nodes[node].firstEnd; end != kNoEnd; end = m_ends[end].next)
      m_arcs[next++] = {end / 2, m_ends[end].neighbor};
  }
  m_areFinite = std::all_of(m_links.begin(), m_links.begin() + m_numLinks,
                            [](const S_Link& link) { return std::isfinite(link.weight); });
  m_isArranged = true;
}

C_Network::S_Arcs C_Network::ArcsOf(unsigned int node) const {
  const unsigned int end = node + 1 < m_numNodes ? m_firstArc[node + 1] : 2 * m_numLinks;
  return {m_arcs.data() + m_firstArc[node], m_arcs.data() + end};
}

// Marks the link that connects the node to its parent. The parent table has link ids, which need not be unique: of
// links between the two that have the same id the first is marked.
void C_Network::MarkTreeLink(unsigned int node) {
  const unsigned int parent = m_parent[node] >> 16;
  const unsigned int id = m_parent[node] & 0xFFFF;
  if (parent == kNone) return;  // a root
  const S_Arcs arcs = ArcsOf(node);
  const auto isTaken = [&](const S_Arc& arc) { return arc.neighbor == parent && m_links[arc.link].id == id; };
  m_links[std::find_if(arcs.begin(), arcs.end(), isTaken)->link].inTree = true;
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
