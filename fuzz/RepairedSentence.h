// Sentences with a right checksum, for mutators.
#ifndef VELAGNSS_FUZZ_REPAIRED_SENTENCE_H
#define VELAGNSS_FUZZ_REPAIRED_SENTENCE_H

#include <random>
#include <string>

#include "tests/Streams.h"

namespace Fuzz {

// Completes the sentence that follows the first `options` bytes of the input with its checksum, with or without CR LF.
// What is no sentence any more becomes one of `sentences`, given without "$" and checksum.
template <class Sentences>
void RepairSentence(std::string& input, std::size_t options, const Sentences& sentences, std::minstd_rand& random) {
  input.resize(std::max(input.size(), options));
  std::string text = input.substr(options);
  text.resize(std::min(text.rfind('*'), text.size()));
  const bool isLost = text.size() < 7 || text[0] != '$';
  text = isLost || random() % 32 == 0 ? sentences[random() % sentences.size()] : text.substr(1);
  text = Sentence(text);
  input = input.substr(0, options) + text.substr(0, text.size() - (random() % 2) * 2);
}

}  // namespace Fuzz

#endif  // VELAGNSS_FUZZ_REPAIRED_SENTENCE_H
