// What a stream holds: its frames, the false starts among them, and the bytes that belong to no frame.
#include "stream/FrameReader.h"

#include <cstdio>
#include <string>

#include "stream/Names.h"

namespace {

void Show(std::monostate) {}

void Show(const velagnss::Frame& frame) {
  const velagnss::MessageName name(frame.protocol, frame.message);
  std::printf("%3llu: %.*s, %u bytes\n", static_cast<unsigned long long>(frame.offset),
              static_cast<int>(name.Text().size()), name.Text().data(), unsigned{frame.length});
}

void Show(const velagnss::RejectedStart& start) {
  const std::string_view reason = ReasonText(start.reason);
  std::printf("%3llu: no frame after all: %.*s\n", static_cast<unsigned long long>(start.offset),
              static_cast<int>(reason.size()), reason.data());
}

void Show(const velagnss::SkippedRange& range) {
  const std::string_view reason = ReasonText(range.reason);
  std::printf("%3llu: %llu bytes skipped: %.*s\n", static_cast<unsigned long long>(range.offset),
              static_cast<unsigned long long>(range.length), static_cast<int>(reason.size()), reason.data());
}

void ShowAll(velagnss::FrameReader& reader) {
  while (true) {
    const velagnss::StreamItem& item = reader.Next();
    if (std::holds_alternative<std::monostate>(item)) return;
    std::visit([](const auto& what) { Show(what); }, item);
  }
}

}  // namespace

int main() {
  const std::string stream =
      "noise$GPHDT,274.07,T*03\r\n"
      "$GPHDT,275.07,T*03\r\n"  // a damaged digit
      "\xD3\x03\xE8\x3E\xD0"    // announces 1000 bytes that will never come
      "$GPHDT,274.07,T*03\r\n";
  velagnss::FrameReader reader;
  reader.ReportEvents(true);
  for (std::size_t at = 0; at < stream.size(); at += 16) {  // in pieces of any size
    const std::string piece = stream.substr(at, 16);
    reader.Feed(reinterpret_cast<const unsigned char*>(piece.data()), piece.size());
    ShowAll(reader);
  }
  reader.Finish();  // frees what waits after the false start
  ShowAll(reader);
  const velagnss::StreamTotals totals = reader.Totals();
  std::printf("%llu frames, %llu of %llu bytes in them\n", static_cast<unsigned long long>(totals.framesGood),
              static_cast<unsigned long long>(totals.bytesAccepted),
              static_cast<unsigned long long>(reader.BytesFed()));
}
