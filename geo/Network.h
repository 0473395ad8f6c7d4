// A network of nodes and weighted links with a fixed capacity, and its minimum spanning tree: for example the stations
// of a survey and the baselines measured between them, of which the tree keeps the set that joins all stations at the
// least total weight.
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

#include <vector>

#include "velagnss_export.h"

// A link of the tree, as GetTreeLinks() delivers it.
struct S_TreeLink {
  unsigned short linkId;  // as given to AddLink()
  unsigned short nodeA;   // the ids of the nodes that it joins, in the order in which they were added
  unsigned short nodeB;   // the other one
};

// Nodes and links are known by ids of 16 bits that the caller chooses; 65535 is no node. Links have no direction,
// except that one added as (a, b) and one added as (b, a) are kept as two.
//
// Every operation but NumNodes(), NumLinks(), ErrorCode() and ErrorText() first clears the error code and leaves one
// from the table below when it fails; the content then stays as it is unless stated otherwise. All memory is taken at
// construction. Copies are independent.
//
//   0  none, empty text                    6  "Invalid link node id"
//   1  "Corrupted network!"                7  "Invalid weight value"
//   2  "Zero number of nodes or links"     8  "No available slot!"
//   3  "Duplicate link detected!"          9  "No root node to start!"
//   4  "Duplicate node id"                10  "The buffer is too small"
//   5  "Invalid node id"
//
// No operation leaves 3 or 4.
class VELAGNSS_API C_Network {
 public:
  // An empty network for up to `maxNodes` nodes and `maxLinks` links. Throws std::bad_array_new_length when one of
  // its arrays would exceed 2 GiB.
  C_Network(unsigned int maxNodes, unsigned int maxLinks);

  // Back to an empty network of the same capacity.
  void Reset();

  // Adds a node; one that is there already counts one more mention. False for id 65535 (code 5) and when all places are
  // taken (8).
  bool AddNode(unsigned short id);

  // Adds a link of a `weight` above 0 between two nodes, and the nodes where they are new; both count one more mention
  // in any case. A link from `nodeA` to `nodeB` that is there already is not added again: it takes `weight` and
  // `linkId` if `weight` is less than its own.
  //
  // False for equal nodes or an id 65535 (code 6), a weight of 0 or less (7), and when all places of nodes or links are
  // taken (8); the nodes stay added then. A NaN weight is accepted.
  bool AddLink(unsigned short linkId, unsigned short nodeA, unsigned short nodeB, float weight);

  // Marks the links of the minimum spanning tree, by Prim's method from the root node. Of several links between two
  // nodes the cheapest counts, of equally cheap ones that added first. A network of several parts gets a tree for each.
  // False for a network without nodes or links (code 2).
  //
  // Time grows with nodes^2 + links.
  bool BuildTree();

  // Copies the links of the tree, in the order in which they were added, to `buffer`, which has room for `capacity`
  // links, all of which are zeroed first; `count` is their number.
  //
  // False (code 10), `count` 0 and all of `buffer` zero when it is null, of capacity 0, or full before the last link of
  // the network has been looked at, in the tree or not: room for one link more than the tree has is always enough.
  bool GetTreeLinks(S_TreeLink* buffer, unsigned int capacity, unsigned int& count);

  // Weight of the cheapest link between the nodes at the indices `i` and `j` (nodes are numbered from 0 in the order in
  // which they were added), and its id, the first one's of equals. NA_FLOAT, and `linkId` left alone, when there is no
  // link or no such node.
  float LinkWeight(unsigned short i, unsigned short j, unsigned short& linkId);

  // Index of the node with the most mentions, the first of equals; -1 in an empty network.
  int RootNode();

  // Code of the last operation's failure and its text; "" for 0 and for codes beyond the table.
  unsigned int ErrorCode() const { return m_errorCode; }
  const char* ErrorText() const;
  static const char* ErrorText(unsigned int code);

  // What has been added so far; nothing is ever taken out but by Reset().
  unsigned int NumNodes() const { return m_numNodes; }
  unsigned int NumLinks() const { return m_numLinks; }

 private:
  static constexpr unsigned short kNone = 0xFFFF;  // no node, no index
  static constexpr unsigned int kNoParent = 0xFFFFFFFF;
  static constexpr unsigned int kNoEnd = 0xFFFFFFFF;
  static constexpr unsigned int kNoLink = 0xFFFFFFFF;
  static constexpr float kNotSet = -3.4e38F;  // no weight, no key

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
    unsigned int next = kNoEnd;        // in the list of its node
    unsigned short neighbour = kNone;  // index of the node at the other end
  };

  bool Fail(unsigned int code);
  unsigned int Mention(unsigned short id);
  unsigned int FindLink(unsigned int a, unsigned int b) const;
  void AppendEnd(unsigned int node, unsigned int end, unsigned int neighbour);
  unsigned short NodeId(unsigned int link, unsigned int side) const;
  bool IsCheaper(unsigned int link, unsigned int than) const;
  unsigned int TakeNearest();
  void Relax(unsigned int taken);
  void MarkTreeLink(unsigned int node);

  unsigned int m_maxNodes;
  unsigned int m_maxLinks;
  unsigned int m_numNodes = 0;
  std::vector<S_Node> m_nodes;
  unsigned int m_numLinks = 0;
  std::vector<S_Link> m_links;
  std::vector<S_End> m_ends;
  unsigned int m_errorCode = 0;
  std::vector<float> m_key;  // cheapest known connection of each node to the tree
  unsigned int m_numQueued = 0;
  std::vector<unsigned short> m_queued;   // indices of the nodes that wait for the tree, in order; then kNone
  std::vector<unsigned char> m_isQueued;  // by node
  std::vector<unsigned int> m_parent;     // (index of the node in the tree << 16) | link id
  std::vector<unsigned int> m_cheapest;   // of the links to the node just taken
};

#endif  // VELAGNSS_GEO_NETWORK_H
