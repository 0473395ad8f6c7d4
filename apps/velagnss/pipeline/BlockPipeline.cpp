#include "apps/velagnss/pipeline/BlockPipeline.h"

#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/parallel_pipeline.h>
#include <oneapi/tbb/task_arena.h>

#include <utility>
#include <variant>

namespace Host {
namespace {

using tbb::filter_mode;
using t_Filter = tbb::filter<C_FrameBlock*, C_FrameBlock*>;

// So many that a stage that takes longer for a block does not keep the others waiting.
constexpr std::size_t kBlocksPerCore = 2;

template <class Stage>
t_Filter FilterOf(filter_mode mode, const Stage& stage) {
  return tbb::make_filter<C_FrameBlock*, C_FrameBlock*>(mode, [stage](C_FrameBlock* block) {
    stage(*block);
    return block;
  });
}

}  // namespace

// The user may want more threads than there are cores.
class C_BlockPipeline::C_Cores {
 public:
  explicit C_Cores(unsigned int count)
      : m_limit(tbb::global_control::max_allowed_parallelism, count), m_arena(static_cast<int>(count)) {}

  template <class Task>
  void Execute(const Task& task) {
    m_arena.execute(task);
  }

 private:
  tbb::global_control m_limit;
  tbb::task_arena m_arena;
};

C_BlockPipeline::C_BlockPipeline(unsigned int cores, std::size_t blockSize, std::vector<C_RecordConsumer*> consumers)
    : m_consumers(std::move(consumers)), m_cores(std::make_unique<C_Cores>(cores)) {
  for (std::size_t i = 0; i < kBlocksPerCore * cores; ++i) {
    m_blocks.push_back(std::make_unique<C_FrameBlock>(blockSize));
    for (C_RecordConsumer* consumer : m_consumers) m_blocks.back()->works.push_back(consumer->MakeBlockWork());
  }
}

C_BlockPipeline::~C_BlockPipeline() = default;

// Consumers that want no items cost nothing.
void C_BlockPipeline::FormGroups(bool isInRange) {
  m_groups.clear();
  m_working.clear();
  for (std::size_t i = 0; i < m_consumers.size(); ++i) {
    if (!m_consumers[i]->WantsMore()) continue;
    if (m_groups.empty() || !m_consumers[i]->UsesPreceding()) m_groups.push_back({{}, isInRange});
    m_groups.back().members.push_back({m_consumers[i], i});
    if (m_blocks.front()->works[i] != nullptr) m_working.push_back({m_consumers[i], i});
  }
}

// As many blocks are under way as there are, and the first of them is the first to be done: the next one is free.
C_FrameBlock* C_BlockPipeline::Fill(const S_Stages& stages) {
  C_FrameBlock& block = *m_blocks[m_next];
  block.Clear();
  stages.fill(block);
  if (block.IsEmpty()) return nullptr;
  m_next = (m_next + 1) % m_blocks.size();
  return &block;
}

void C_BlockPipeline::Run(const S_Stages& stages, bool isInRange) {
  FormGroups(isInRange);
  const auto fill = tbb::make_filter<void, C_FrameBlock*>(filter_mode::serial_in_order, [&](tbb::flow_control& flow) {
    C_FrameBlock* const block = Fill(stages);
    if (block == nullptr) flow.stop();
    return block;
  });
  t_Filter rest =
      FilterOf(filter_mode::parallel, stages.prepare) & FilterOf(filter_mode::serial_in_order, stages.decode);
  for (S_Group& group : m_groups)
    rest = rest & FilterOf(filter_mode::serial_in_order, [&group](C_FrameBlock& block) { Give(group, block); });
  if (!m_working.empty()) rest = rest & FilterOf(filter_mode::parallel, [this](C_FrameBlock& block) { Work(block); });
  const auto collect = tbb::make_filter<C_FrameBlock*, void>(filter_mode::serial_in_order,
                                                             [this](C_FrameBlock* block) { Collect(*block); });
  const auto all = fill & rest & collect;
  m_cores->Execute([&] { tbb::parallel_pipeline(m_blocks.size(), all); });
}

void C_BlockPipeline::Give(S_Group& group, C_FrameBlock& block) {
  for (const S_Member& member : group.members) member.consumer->BeginBlock(block.works[member.place].get());
  for (const S_BlockItem& item : block.Items()) Give(group, item);
  for (const S_Member& member : group.members) member.consumer->EndBlock();
}

void C_BlockPipeline::Give(S_Group& group, const S_BlockItem& item) {
  if (item.isInRange != group.isInRange) {
    group.isInRange = item.isInRange;
    for (const S_Member& member : group.members) member.consumer->Mute(!item.isInRange);
  }
  if (!item.isWanted) return;
  for (const auto& [consumer, place] : group.members) {
    if (!item.isInRange && !consumer->GoesThroughRanges()) continue;
    if (const auto* frame = std::get_if<velagnss::Frame>(&item.item))
      consumer->OnFrame({*frame, item.decoded, item.clock});
    else if (const auto* start = std::get_if<velagnss::RejectedStart>(&item.item))
      consumer->OnRejection(*start);
    else if (const auto* range = std::get_if<velagnss::SkippedRange>(&item.item))
      consumer->OnSkipped(*range);
  }
}

void C_BlockPipeline::Work(C_FrameBlock& block) const {
  for (const S_Member& member : m_working) block.works[member.place]->Do();
}

void C_BlockPipeline::Collect(C_FrameBlock& block) const {
  for (const S_Member& member : m_working) member.consumer->Collect(*block.works[member.place]);
}

}  // namespace Host
