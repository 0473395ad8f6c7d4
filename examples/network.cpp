// Four stations and the baselines between them: which baselines connect all stations with the least total length?
#include <cstdio>

#include "geo/Network.h"

int main() {
  C_Network network(4, 6);

  // Baseline, its two stations, and its length in km as the weight.
  network.AddLink(1, 101, 102, 12.5F);
  network.AddLink(2, 102, 103, 8.0F);
  network.AddLink(3, 101, 103, 9.5F);
  network.AddLink(4, 103, 104, 20.0F);
  network.AddLink(5, 102, 104, 15.0F);
  if (!network.AddLink(6, 104, 104, 1.0F)) std::printf("baseline 6: %s\n", network.ErrorText());

  S_TreeLink links[6];
  unsigned int count = 0;
  if (!network.BuildTree() || !network.GetTreeLinks(links, 6, count)) {
    std::printf("no tree: %s\n", network.ErrorText());
    return 1;
  }
  for (unsigned int i = 0; i < count; ++i)
    std::printf("baseline %d from %d to %d\n", links[i].linkId, links[i].nodeA, links[i].nodeB);
}
