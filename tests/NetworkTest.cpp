#include "geo/Network.h"

#include <algorithm>
#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/kruskal_min_spanning_tree.hpp>
#include <limits>
#include <new>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "geo/NotAvailable.h"
#include "tests/Cases.h"

namespace {

struct S_TestLink {
  unsigned short id, a, b;
  float weight;
};

// The tree's links as text, "id:a-b " each.
std::string Tree(C_Network& network) {
  std::vector<S_TreeLink> links(network.NumLinks() + 1);
  unsigned int count = 99;
  EXPECT_TRUE(network.GetTreeLinks(links.data(), static_cast<unsigned int>(links.size()), count));
  std::string text;
  for (unsigned int i = 0; i < count; ++i)
    text += std::to_string(links[i].linkId) + ":" + std::to_string(links[i].nodeA) + "-" +
            std::to_string(links[i].nodeB) + " ";
  return text;
}

// ---- trees by hand -------------------------------------------------------------------------------------------------

struct S_TreeCase {
  const char* name;
  std::vector<S_TestLink> links;
  const char* tree;
};

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
const S_TreeCase kTreeCases[] = {
    {"OneLink", {{9, 5, 4, 1}}, "9:5-4 "},
    {"Triangle", {{1, 1, 2, 1}, {2, 2, 3, 2}, {3, 1, 3, 3}}, "1:1-2 2:2-3 "},
    {"TriangleOtherWayRound", {{1, 1, 2, 3}, {2, 3, 2, 2}, {3, 3, 1, 1}}, "2:3-2 3:3-1 "},
    {"TiesGoToTheFirstNode", {{1, 1, 2, 1}, {2, 2, 3, 1}, {3, 3, 1, 1}}, "1:1-2 3:3-1 "},
    {"TiesFromTheBestConnectedNode", {{1, 1, 2, 1}, {2, 3, 2, 1}, {3, 2, 4, 1}, {4, 1, 3, 1}}, "1:1-2 2:3-2 3:2-4 "},
    {"CheaperRepeatReplacesIdAndWeight", {{7, 1, 2, 3}, {8, 1, 2, 2}}, "8:1-2 "},
    {"DearerRepeatChangesNothing", {{7, 1, 2, 3}, {8, 1, 2, 3}, {9, 1, 2, 4}}, "7:1-2 "},
    {"ReversedRepeatIsALinkOfItsOwn", {{7, 1, 2, 3}, {8, 2, 1, 2}}, "8:2-1 "},
    {"EquallyCheapPairTakesTheFirst", {{7, 1, 2, 3}, {8, 2, 1, 3}}, "7:1-2 "},
    {"PairWithOneIdMarksTheFirst", {{7, 1, 2, 3}, {7, 2, 1, 2}}, "7:1-2 "},
    {"OneIdForAll", {{5, 1, 2, 1}, {5, 2, 3, 1}, {5, 3, 4, 1}}, "5:1-2 5:2-3 5:3-4 "},
    {"LinkId65535", {{65535, 1, 2, 1}, {65535, 2, 3, 1}}, "65535:1-2 65535:2-3 "},
    {"TwoParts", {{1, 1, 2, 1}, {2, 3, 4, 1}, {3, 4, 5, 1}, {4, 3, 5, 9}}, "1:1-2 2:3-4 3:4-5 "},
    {"HighestNodeIds", {{1, 65534, 0, 1}, {2, 0, 65533, 1}}, "1:65534-0 2:0-65533 "},
    {"InfiniteWeight", {{1, 1, 2, std::numeric_limits<float>::infinity()}}, "1:1-2 "},
    {"WeightThatIsNoNumberHidesOthers", {{1, 1, 2, 5}, {2, 1, 3, 1}, {3, 3, 2, kNan}, {4, 2, 3, 3}}, "1:1-2 3:3-2 "},
};

TEST_ROWS(NetworkTree, HasTheseLinks, kTreeCases, row) {
  C_Network network(10, 10);
  for (const S_TestLink& link : row.links) ASSERT_TRUE(network.AddLink(link.id, link.a, link.b, link.weight));
  EXPECT_EQ(Tree(network), "");  // no tree before it is built
  ASSERT_TRUE(network.BuildTree());
  EXPECT_EQ(Tree(network), row.tree);
  const C_Network copy(network);
  network.Reset();
  EXPECT_EQ(network.NumNodes() + network.NumLinks(), 0U);
  EXPECT_FALSE(network.BuildTree());
  network = copy;
  ASSERT_TRUE(network.BuildTree());  // a second time from the state that the first one left
  EXPECT_EQ(Tree(network), row.tree);
}

// ---- errors --------------------------------------------------------------------------------------------------------

struct S_ErrorCase {
  const char* name;
  bool (*run)(C_Network& network);  // of 3 nodes (1, 2, 3) and 2 links (1-2, 2-3): exactly full
  unsigned int code;
  const char* text;
};

constexpr S_ErrorCase kErrorCases[] = {
    {"NodeAgain", [](C_Network& n) { return n.AddNode(3); }, 0, ""},
    {"NodeBeyondCapacity", [](C_Network& n) { return n.AddNode(4); }, 8, "No available slot!"},
    {"NoNode", [](C_Network& n) { return n.AddNode(65535); }, 5, "Invalid node id"},
    {"LinkToItself", [](C_Network& n) { return n.AddLink(1, 5, 5, 1); }, 6, "Invalid link node id"},
    {"LinkFromNoNode", [](C_Network& n) { return n.AddLink(1, 65535, 1, 1); }, 6, "Invalid link node id"},
    {"LinkToNoNode", [](C_Network& n) { return n.AddLink(1, 1, 65535, 0); }, 6, "Invalid link node id"},
    {"LinkWithoutWeight", [](C_Network& n) { return n.AddLink(1, 5, 6, 0); }, 7, "Invalid weight value"},
    {"LinkOfNegativeWeight", [](C_Network& n) { return n.AddLink(1, 1, 3, -1); }, 7, "Invalid weight value"},
    {"LinkBeyondCapacity", [](C_Network& n) { return n.AddLink(1, 1, 3, 1); }, 8, "No available slot!"},
    {"LinkToNodeBeyondCapacity", [](C_Network& n) { return n.AddLink(1, 1, 4, 1); }, 8, "No available slot!"},
    {"LinkAgain", [](C_Network& n) { return n.AddLink(1, 1, 2, 1); }, 0, ""},
    {"Tree", [](C_Network& n) { return n.BuildTree(); }, 0, ""},
    {"TreeOfNothing", [](C_Network& n) { return n.Reset(), n.BuildTree(); }, 2, "Zero number of nodes or links"},
    {"TreeWithoutLinks", [](C_Network& n) { return n.Reset(), n.AddNode(1), n.BuildTree(); }, 2,
     "Zero number of nodes or links"},
};

TEST_ROWS(NetworkError, CodeAndText, kErrorCases, row) {
  C_Network network(3, 2);
  ASSERT_TRUE(network.AddLink(1, 1, 2, 1) && network.AddLink(2, 2, 3, 1));
  network.AddNode(65535);  // a failure that the next operation must clear
  EXPECT_EQ(row.run(network), row.code == 0);
  EXPECT_EQ(network.ErrorCode(), row.code);
  EXPECT_STREQ(network.ErrorText(), row.text);
}

// A moved-from network once kept counts that indexed freed arrays.
TEST(Network, GrowsAfterATreeWasBuilt) {
  C_Network network(4, 4);
  const auto treeWith = [&network](const S_TestLink& link) {
    EXPECT_TRUE(network.AddLink(link.id, link.a, link.b, link.weight) && network.BuildTree());
    return Tree(network);
  };
  EXPECT_EQ(treeWith({1, 1, 2, 5}), "1:1-2 ");
  EXPECT_EQ(treeWith({2, 2, 3, 5}), "1:1-2 2:2-3 ");
  EXPECT_EQ(treeWith({3, 3, 1, 4}), "1:1-2 3:3-1 ");
  EXPECT_EQ(treeWith({4, 2, 3, 3}), "4:2-3 3:3-1 ");
  EXPECT_TRUE(network.AddNode(9) && network.BuildTree());
  EXPECT_EQ(Tree(network), "4:2-3 3:3-1 ");
}

TEST(Network, MovedFromIsEmpty) {
  C_Network source(3, 3), target(1, 1);
  ASSERT_TRUE(source.AddLink(1, 7, 8, 1) && source.BuildTree());
  source.AddNode(65535);  // leaves an error code
  C_Network moved(std::move(source));
  EXPECT_EQ(Tree(moved), "1:7-8 ");
  target = std::move(moved);
  C_Network& self = target;
  target = std::move(self);
  EXPECT_TRUE(target.AddNode(9));
  for (C_Network* const empty : {&source, &moved}) {
    unsigned short id = 77;
    EXPECT_EQ(empty->NumNodes() + empty->NumLinks() + empty->ErrorCode(), 0U);
    EXPECT_EQ(empty->LinkWeight(0, 1, id), NA_FLOAT);
    EXPECT_EQ(empty->RootNode(), -1);
    EXPECT_EQ(Tree(*empty), "");
    for (int round = 0; round < 2; ++round, empty->Reset())
      EXPECT_FALSE(empty->AddNode(2) || empty->AddLink(1, 2, 3, 1) || empty->BuildTree());
    *empty = target;
    EXPECT_EQ(Tree(*empty), "1:7-8 ");
  }
}

TEST(Network, Capacities) {
  C_Network empty(0, 0);
  EXPECT_FALSE(empty.AddNode(1));
  EXPECT_EQ(empty.RootNode(), -1);
  EXPECT_STREQ(C_Network::ErrorText(11), "");
  EXPECT_THROW(C_Network(0xFFFFFFFF, 1), std::bad_array_new_length);
  EXPECT_THROW(C_Network(1, 0xFFFFFFFF), std::bad_array_new_length);
}

// ---- looking up ----------------------------------------------------------------------------------------------------

// Mentions count, also those of links that are not added; of equals the first node is the root.
TEST(Network, RootIsTheNodeMostOftenNamed) {
  C_Network network(3, 1);
  network.AddNode(10);
  network.AddNode(20);
  EXPECT_EQ(network.RootNode(), 0);
  network.AddNode(20);
  EXPECT_EQ(network.RootNode(), 1);
  EXPECT_TRUE(network.AddLink(1, 10, 30, 5));
  EXPECT_EQ(network.RootNode(), 0);
  EXPECT_FALSE(network.AddLink(2, 30, 20, 5));  // no room for the link, but both are named
  EXPECT_EQ(network.RootNode(), 1);
}

TEST(Network, WeightOfTheCheapestLink) {
  C_Network network(4, 9);
  for (const S_TestLink& link : {S_TestLink{1, 10, 20, 5}, {2, 20, 10, 4}, {3, 10, 30, 1}})
    network.AddLink(link.id, link.a, link.b, link.weight);
  network.AddNode(40);
  unsigned short id = 77;
  for (const auto& [i, j] : {std::pair<unsigned short, unsigned short>{1, 2}, {0, 0}, {0, 3}, {0, 4}, {65535, 0}}) {
    EXPECT_EQ(network.LinkWeight(i, j, id), NA_FLOAT);
    EXPECT_EQ(id, 77);
  }
  EXPECT_EQ(network.LinkWeight(0, 1, id), 4);
  EXPECT_EQ(id, 2);
  EXPECT_EQ(network.LinkWeight(2, 0, id), 1);
  EXPECT_EQ(id, 3);
  network.AddLink(4, 10, 20, 4);  // now both directions weigh the same
  EXPECT_EQ(network.LinkWeight(1, 0, id), 4);
  EXPECT_EQ(id, 4);
}

// The tree's links are {1, 2} of 3, then {1, 3} of 3: only after the last link of all, a full buffer is enough.
TEST(Network, BufferMustOutlastTheLinks) {
  C_Network firstTwo(3, 3), firstAndLast(3, 3);
  for (const S_TestLink& link : {S_TestLink{1, 1, 2, 1}, {2, 2, 3, 2}, {3, 1, 3, 3}}) {
    firstTwo.AddLink(link.id, link.a, link.b, link.weight);
    firstAndLast.AddLink(link.id, link.a, link.b, link.id == 2 ? 9 : link.weight);
  }
  ASSERT_TRUE(firstTwo.BuildTree() && firstAndLast.BuildTree());
  for (unsigned int capacity = 0; capacity <= 5; ++capacity) {
    for (C_Network* network : {&firstTwo, &firstAndLast}) {
      const bool enough = capacity > 2 || (capacity == 2 && network == &firstAndLast);
      std::vector<S_TreeLink> buffer(6, S_TreeLink{9, 9, 9});
      unsigned int count = 99;
      EXPECT_EQ(network->GetTreeLinks(buffer.data(), capacity, count), enough) << capacity;
      EXPECT_EQ(count, enough ? 2U : 0U);
      EXPECT_EQ(network->ErrorCode(), enough ? 0U : 10U);
      for (unsigned int i = 0; i < 6; ++i)
        EXPECT_EQ(buffer[i].nodeA == 0, i >= count && i < capacity) << "capacity " << capacity << ", entry " << i;
    }
  }
  unsigned int count = 99;
  EXPECT_FALSE(firstTwo.GetTreeLinks(nullptr, 5, count));
  EXPECT_EQ(count, 0U);
}

// ---- against Boost -------------------------------------------------------------------------------------------------

struct S_RandomCase {
  const char* name;
  unsigned int nodes, links;
  unsigned int weights;  // how many different ones: few make ties
};

constexpr S_RandomCase kRandomCases[] = {
    {"ManyTies", 30, 100, 3},    {"AllTheSame", 30, 100, 1}, {"Dense", 20, 300, 1000},
    {"SeveralParts", 60, 40, 8}, {"Pairs", 4, 12, 5},
};

TEST_ROWS(NetworkRandom, TreeIsAsLightAsKruskals, kRandomCases, c) {
  using t_Graph = boost::adjacency_list<boost::vecS, boost::vecS, boost::undirectedS, boost::no_property,
                                        boost::property<boost::edge_weight_t, float>>;
  std::mt19937 random(1);
  for (int round = 0; round < 50; ++round) {
    C_Network network(c.nodes, c.links);
    t_Graph graph(c.nodes);
    std::vector<float> weights(c.links);
    for (unsigned short id = 0; id < c.links; ++id) {
      const auto a = static_cast<unsigned short>(random() % c.nodes),
                 b = static_cast<unsigned short>(random() % c.nodes);
      const auto weight = static_cast<float>(1 + random() % c.weights);
      if (a == b) continue;
      ASSERT_TRUE(network.AddLink(id, a, b, weight));
      boost::add_edge(a, b, weight, graph);
      weights[id] = weight;
    }
    ASSERT_TRUE(network.BuildTree());
    std::vector<S_TreeLink> links(c.links + 1);
    unsigned int count;
    ASSERT_TRUE(network.GetTreeLinks(links.data(), c.links + 1, count));
    float weight = 0;
    for (unsigned int i = 0; i < count; ++i) weight += weights[links[i].linkId];

    std::vector<t_Graph::edge_descriptor> reference;
    boost::kruskal_minimum_spanning_tree(graph, std::back_inserter(reference));
    float referenceWeight = 0;
    for (const auto& edge : reference) referenceWeight += boost::get(boost::edge_weight, graph, edge);
    EXPECT_EQ(count, reference.size());
    EXPECT_EQ(weight, referenceWeight);
  }
}

}  // namespace
