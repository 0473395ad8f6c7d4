#include "apps/velagnss/commands/HelpText.h"

#include "Cases.h"

namespace {

struct S_WrapCase {
  const char* name;
  const char* help;
  const char* wrapped;  // to 40 columns
};
const S_WrapCase kWraps[] = {
    {"Paragraph", "one two three four five six seven eight\nnine", "one two three four five six seven eight\nnine\n"},
    {"ParagraphIsFilled", "one two\nthree\n\nfour\n", "one two three\n\nfour\n"},
    {"HeadingIsNot", "Options:\n  --hex  bytes\n", "Options:\n  --hex  bytes\n"},
    {"DescriptionHasItsColumn", "  --hex      add the bytes of each frame as digits\n",
     "  --hex      add the bytes of each frame\n             as digits\n"},
    {"DescriptionGoesOn", "  --hex      of:\n             a b c\n  --hux  d\n", "  --hex      of: a b c\n  --hux  d\n"},
    {"NoRoomBeside", "  velagnss decode x.bin     all frames, all fields\n",
     "  velagnss decode x.bin\n      all frames, all fields\n"},
    {"LongWord", "  a123456789012345678901234567890123456789012", "  a123456789012345678901234567890123456789012\n"},
};
TEST_ROWS(HelpText, IsWrapped, kWraps, row) { EXPECT_EQ(Host::WrapHelp(row.help, 40), row.wrapped); }

}  // namespace
