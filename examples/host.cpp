// A complete program: reads a receiver's bytes from standard input and prints every position in them.
#include <unistd.h>

#include <cstdio>

#include "geo/NotAvailable.h"
#include "stream/RecordDecoder.h"

int main() {
  velagnss::FrameReader reader;
  velagnss::RecordDecoder decoder;
  unsigned char bytes[4096];
  for (ssize_t count = 1; count > 0;) {
    count = read(STDIN_FILENO, bytes, sizeof bytes);
    if (count > 0) reader.Feed(bytes, static_cast<std::size_t>(count));
    if (count <= 0) reader.Finish();
    while (const velagnss::Frame* frame = reader.NextFrame()) {
      const auto* gga = std::get_if<S_GGA_Data>(&decoder.Decode(*frame).record);
      if (gga != nullptr && !IsNotAvailable(gga->latitude)) std::printf("%.7f %.7f\n", gga->latitude, gga->longitude);
    }
  }
}
