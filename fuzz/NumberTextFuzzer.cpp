// Field tokenizer, number parsers and number writers against the C library; times against their own parts.
#include <cctype>

#include "fuzz/Fuzz.h"
#include "tests/LibraryTwins.h"
#include "textproto/FieldValues.h"

namespace {

namespace Fields = velagnss::textproto;
using Fields::C_PrintFormat;

void RequireSame(const std::string& difference) { Fuzz::Require(difference.empty(), difference.c_str()); }

// Seconds of the day are those of hours, minutes and seconds.
void CompareClocks(const std::string& text) {
  const std::string field = text.c_str();
  ExactCopy copy(field);
  const std::string_view view = Fuzz::View(copy.Data(), copy.Size());
  unsigned int hours = 77, minutes = 77;
  double seconds = 77, secondsOfDay = 77, degrees = 77;
  Fields::S_Date date = {};
  const bool isTime = Fields::ParseTimeOfDay(view, hours, minutes, seconds);
  const bool isSeconds = Fields::ParseTimeOfDaySeconds(view, secondsOfDay);
  Fuzz::Require(isTime == isSeconds, "seconds of the day are read of each time");
  Fuzz::Require(Fields::ParseDegreesMinutes(view, degrees) || degrees == 0, "a bad angle is 0");
  Fuzz::Require(Fields::ParseDate(view, {1, 2, 3}, date) || field.size() > 5 || date.day == 3, "a short date is none");
  if (!isTime || field.empty()) return;
  const double sum = hours * 3600.0 + minutes * 60.0 + seconds;
  Fuzz::Require(std::memcmp(&secondsOfDay, &sum, sizeof sum) == 0, "seconds of the day are those of the time");
}

void CompareTokenizer(Fuzz::C_Input input) {
  const unsigned int capacity = input.Below(2049);
  const bool isCounting = input.Below(4) != 0;
  const unsigned int outSize = input.Below(2) == 0 ? 64 : input.Below(600);
  const std::string delimiters = input.Below(4) != 0 ? ",*" : input.Take(input.Below(60)).c_str();
  RequireSame(LibraryTwins::TokenizerDiffers(input.Rest().c_str(), delimiters, capacity, isCounting, outSize));
}

void CompareWriters(Fuzz::C_Input input) {
  const auto number = input.Value<double>();
  const auto integer = input.Value<long long>();
  const unsigned int decimals = input.Below(Fields::NumberText::kMaxDecimals + 1);
  RequireSame(LibraryTwins::WritersDiffer(number, integer, decimals, input.Below(20)));
}

// The C library takes memory for all digits asked for, by the gigabyte.
bool AsksForTooMuch(const std::string& format) {
  std::size_t digits = 0;
  for (const char c : format) {
    digits = std::isdigit(static_cast<unsigned char>(c)) != 0 ? digits + 1 : 0;
    if (digits > 5) return true;
  }
  return false;
}

void CompareFormats(Fuzz::C_Input input) {
  const auto number = input.Value<double>();
  const auto integer = input.Value<int>();
  const std::string format = input.Rest().c_str();
  if (AsksForTooMuch(format)) return;
  RequireSame(LibraryTwins::PrintDiffers(format, C_PrintFormat::kRealConversions, number));
  RequireSame(LibraryTwins::PrintDiffers(format, C_PrintFormat::kIntegerConversions, integer));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fuzz::C_Input input(data, size);
  const unsigned int kind = input.Below(6);
  if (kind == 0) RequireSame(LibraryTwins::ScansDiffer(input.Rest()));
  if (kind == 1) RequireSame(LibraryTwins::FieldsDiffer(input.Rest()));
  if (kind == 2) CompareTokenizer(input);
  if (kind == 3) CompareWriters(input);
  if (kind == 4) CompareFormats(input);
  if (kind == 5) CompareClocks(input.Rest());
  return 0;
}
