// A stream on several cores: blocks of frames that go through stages.
//
// What depends on earlier frames is done by stages that take the blocks one after the other, in the order of the
// stream: the search for frames, decoding, and each consumer. Different stages are at work on different blocks at the
// same time. What depends on a block alone, such as the text of its records, is done for several blocks at once. So
// the result is the same for any number of cores and any size of the blocks.
#ifndef VELAGNSS_APPS_BLOCK_PIPELINE_H
#define VELAGNSS_APPS_BLOCK_PIPELINE_H

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "apps/velagnss/pipeline/FrameBlock.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"

namespace Host {

class C_BlockPipeline {
 public:
  // `cores`: how many threads are at work at most. The consumers must outlive the pipeline.
  C_BlockPipeline(unsigned int cores, std::size_t blockSize, std::vector<C_RecordConsumer*> consumers);
  ~C_BlockPipeline();
  C_BlockPipeline(const C_BlockPipeline&) = delete;
  C_BlockPipeline& operator=(const C_BlockPipeline&) = delete;

  // `fill` and `decode` are called for one block after the other, `prepare` in between for several at once. `fill`
  // leaves a block empty when there is nothing more.
  struct S_Stages {
    std::function<void(C_FrameBlock&)> fill;
    std::function<void(C_FrameBlock&)> prepare;
    std::function<void(C_FrameBlock&)> decode;
  };

  // Returns when the consumers have had all items. `isInRange`: before the first of them.
  void Run(const S_Stages& stages, bool isInRange);

 private:
  struct S_Member {
    C_RecordConsumer* consumer;
    std::size_t place;  // among all consumers
  };
  // Consumers that get each item in turn.
  struct S_Group {
    std::vector<S_Member> members;
    bool isInRange;
  };
  class C_Cores;

  void FormGroups(bool isInRange);
  C_FrameBlock* Fill(const S_Stages& stages);
  static void Give(S_Group& group, C_FrameBlock& block);
  static void Give(S_Group& group, const S_BlockItem& item);
  void Work(C_FrameBlock& block) const;
  void Collect(C_FrameBlock& block) const;

  std::vector<C_RecordConsumer*> m_consumers;
  std::vector<S_Group> m_groups;                        // of those that want items
  std::vector<S_Member> m_working;                      // those of them that put work off
  std::vector<std::unique_ptr<C_FrameBlock>> m_blocks;  // used in turn
  std::size_t m_next = 0;
  std::unique_ptr<C_Cores> m_cores;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_BLOCK_PIPELINE_H
