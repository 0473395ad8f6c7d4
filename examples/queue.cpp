// A queue of records between a producer and a consumer: what each policy does when the queue is full.
#include <cstdio>

#include "framing/CircularBuffer.h"

struct Fix {
  double latitude, longitude;
};

static void Fill(eCircBufOvrflowHandling policy, const char* name) {
  C_CircularBuffer queue(3, sizeof(Fix), policy);
  for (int i = 1; i <= 5; ++i) {
    const Fix fix = {static_cast<double>(i), 10.0 * i};
    queue.QueueItem(&fix);  // copied; the queue knows only its size
  }
  std::printf("%s:", name);
  Fix oldest;
  while (queue.DequeueNItems(&oldest, 1) == 1) std::printf(" %.0f/%.0f", oldest.latitude, oldest.longitude);
  std::printf("\n");
}

int main() {
  Fill(eCircBufOvrflowDropOldest, "drop oldest");
  Fill(eCircBufOvrflowFlushAll, "flush all");
  Fill(eCircBufOvrflowRejectNew, "reject new");
}
