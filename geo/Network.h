// A network of nodes and weighted links with a fixed capacity, and its minimum spanning tree. The nodes can be the
// stations of a survey and the links the baselines measured between them: the tree then holds the baselines that
// connect all stations at the least total weight.
//
//   C_Network network(10, 45);
//   network.AddLink(1, 101, 102, 3.5F);    // link 1 joins nodes 101 and 102
//   ...
//   network.BuildTree();
//   S_TreeLink links[45];
//   unsigned int count;
//   network.GetTreeLinks(links, 45, count);
#ifndef VELAGNSS_GEO_NETWORK_H
#define VELAGNSS_GEO_NETWORK_H

#include <cstdint>
#include <vector>

#include "geo/NotAvailable.h"
#include "velagnss_export.h"

// A link of the tree, as returned by GetTreeLinks().
struct S_TreeLink {
  unsigned short linkId;  // as given to AddLink()
  unsigned short nodeA;   // id of the first node given to AddLink()
  unsigned short nodeB;   // id of the second one
};

// The caller identifies nodes and links by 16-bit ids; 65535 is not a node. Links have no direction, except that a link
// added as (a, b) and one added as (b, a) are kept as two.
//
// Every operation except NumNodes(), NumLinks(), ErrorCode() and ErrorText() first clears the error code, and sets one
// from the table below when it fails; the network then stays unchanged unless stated otherwise. All memory is allocated
// at construction.
//
//   0  none, empty text                    6  "Invalid link node id"
//   1  "Corrupted network!"                7  "Invalid weight value"
//   2  "Zero number of nodes or links"     8  "No available slot!"
//   3  "Duplicate link detected!"          9  "No root node to start!"
//   4  "Duplicate node id"                10  "The buffer is too small"
//   5  "Invalid node id"
//
// No operation sets 1, 3 or 4.
class VELAGNSS_API C_Network {
 public:
  // An empty network for up to `maxNodes` nodes and `maxLinks` links. Throws std::bad_array_new_length when one of
  // its arrays would exceed 2 GiB.
  C_Network(unsigned int maxNodes, unsigned int maxLinks);

  // Copies are independent and have the same capacity, content and tree. A network that was moved from is empty, with
  // capacity 0 and error code 0: every operation is defined on it, and it can be assigned to.
  C_Network(const C_Network& other);
  C_Network(C_Network&& other) noexcept;
  C_Network& operator=(const C_Network& other);
  C_Network& operator=(C_Network&& other) noexcept;
  ~C_Network();

  // Returns to an empty network of the same capacity.
  void Reset();

  // Adds a node; a node that exists already gets one more mention. False for id 65535 (code 5) and when the capacity is
  // used up (8).
  bool AddNode(unsigned short id);

  // Adds a link of a `weight` above 0 between two nodes, and the nodes themselves if they are new; both get one more
  // mention in any case. A link from `nodeA` to `nodeB` that exists already is not added again: it takes `weight` and
  // `linkId` if `weight` is less than its own.
  //
  // False for equal nodes or an id 65535 (code 6), a weight of 0 or less (7), and when the capacity for nodes or links
  // is used up (8); nodes that were added by then stay. A NaN weight is accepted.
  bool AddLink(unsigned short linkId, unsigned short nodeA, unsigned short nodeB, float weight);

  // Marks the links of the minimum spanning tree, by Prim's method from the root node. Of several links between two
  // nodes the cheapest is used, of equally cheap ones the one added first. A network of several parts gets a tree for
  // each. False for a network without nodes or links (code 2).
  //
  // Time grows with nodes + links * log(links); with weights that are infinite or NaN, with nodes^2 + links.
  bool BuildTree();

  // Copies the links of the tree to `buffer`, in the order in which they were added; `count` is their number. `buffer`
  // has room for `capacity` links and is zeroed first.
  //
  // False (code 10), with `count` 0 and `buffer` zero, when the buffer is null, has capacity 0, or is full before the
  // last link of the network has been examined, whether that is in the tree or not. Room for one link more than the
  // tree has is always enough.
  bool GetTreeLinks(S_TreeLink* buffer, unsigned int capacity, unsigned int& count);

  // Weight of the cheapest link between the nodes at the indices `i` and `j` (nodes are numbered from 0 in the order in
  // which they were added), and its id; of equals the one added first. NA_FLOAT, with `linkId` unchanged, when there is
  // no such link or node.
  float LinkWeight(unsigned short i, unsigned short j, unsigned short& linkId);

  // Index of the node with the most mentions, of equals the one added first; -1 in an empty network.
  int RootNode();

  // Error code of the last operation and its text; the text is "" for 0 and for codes beyond the table.
  unsigned int ErrorCode() const { return m_errorCode; }
  const char* ErrorText() const;
  static const char* ErrorText(unsigned int code);

  // The number of nodes and links added; only Reset() removes any.
  unsigned int NumNodes() const { return m_numNodes; }
  unsigned int NumLinks() const { return m_numLinks; }

 private:
  static constexpr unsigned short kNone = 0xFFFF;  // no node, no index
  static constexpr unsigned int kNoParent = 0xFFFFFFFF;
  static constexpr unsigned int kNoEnd = 0xFFFFFFFF;
  static constexpr unsigned int kNoLink = 0xFFFFFFFF;
  static constexpr float kNotSet = NA_FLOAT;  // no weight, no key

  struct S_Node {
    unsigned short id = kNone;
    unsigned short degree = 0;       // mentions by AddNode() and by links
    unsigned int firstEnd = kNoEnd;  // the ends at this node form a list, in the order in which they were added
    unsigned int lastEnd = kNoEnd;
  };

  struct S_Link {
    unsigned short id = kNone;
    bool inTree = false;
    float weight = kNotSet;
  };

  // Link l has the ends 2 l at node A and 2 l + 1 at node B.
  struct S_End {
    unsigned int next = kNoEnd;       // in the list of its node
    unsigned short neighbor = kNone;  // index of the node at the other end
  };

  // An end as BuildTree() looks at it, next to the others of its node.
  struct S_Arc {
    unsigned int link = kNoLink;
    unsigned short neighbor = kNone;
  };
  struct S_Arcs {
    const S_Arc* first;
    const S_Arc* last;  // beyond the last one
    const S_Arc* begin() const { return first; }
    const S_Arc* end() const { return last; }
  };

  bool Fail(unsigned int code);
  unsigned int Mention(unsigned short id);
  unsigned int FindLink(unsigned int a, unsigned int b) const;
  void AppendEnd(unsigned int node, unsigned int end, unsigned int neighbor);
  unsigned short NodeId(unsigned int link, unsigned int side) const;
  bool IsCheaper(unsigned int link, unsigned int than) const;
  void GrowByOffers(unsigned int root);
  void GrowByScans(unsigned int root);
  void Connect(unsigned int node, unsigned int parent, unsigned int link);
  unsigned int BestOffer();
  unsigned int NearestWaiting() const;
  void ArrangeArcs();
  S_Arcs ArcsOf(unsigned int node) const;
  void MarkTreeLink(unsigned int node);

  unsigned int m_maxNodes;
  unsigned int m_maxLinks;
  unsigned int m_numNodes = 0;
  std::vector<S_Node> m_nodes;
  unsigned int m_numLinks = 0;
  std::vector<S_Link> m_links;
  std::vector<S_End> m_ends;
  unsigned int m_errorCode = 0;
  bool m_isArranged = false;             // the next three fit nodes and links
  bool m_areFinite = true;               // all weights
  std::vector<S_Arc> m_arcs;             // by node, those of a node in the order of its list
  std::vector<unsigned int> m_firstArc;  // by node
  std::vector<float> m_key;              // cheapest known connection of each node to the tree
  std::vector<std::uint64_t> m_offers;   // a heap, the best one first: weight and node
  unsigned int m_numOffers = 0;
  std::vector<unsigned char> m_isWaiting;  // by node: not yet in the tree
  unsigned int m_firstWaiting = 0;         // no node before it waits
  std::vector<unsigned int> m_parent;      // (index of the node in the tree << 16) | link id
  std::vector<unsigned int> m_cheapest;    // of the links to the node just taken
};

#endif  // VELAGNSS_GEO_NETWORK_H
