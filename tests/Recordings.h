// A recorder whose clock the test sets, and what it leaves in its directory.
#ifndef VELAGNSS_TESTS_RECORDINGS_H
#define VELAGNSS_TESTS_RECORDINGS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "apps/velagnss/record/Recorder.h"
#include "apps/velagnss/record/ReplayReader.h"
#include "stream/FrameReader.h"
#include "tests/ProgramRun.h"

// 2026-05-01 12:00:00 UTC.
inline constexpr Host::t_RecordTime kNoon =
    std::chrono::sys_days(std::chrono::year(2026) / 5 / 1) + std::chrono::hours(12);

inline std::vector<std::string> FramesOf(std::string_view bytes) {
  velagnss::FrameReader reader;
  reader.AcceptUnlisted(true);
  std::vector<std::string> frames;
  const auto take = [&] {
    while (const velagnss::Frame* frame = reader.NextFrame())
      frames.emplace_back(reinterpret_cast<const char*>(frame->data), frame->length);
  };
  reader.Feed(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  take();
  reader.Finish();
  take();
  return frames;
}

// The pieces of a recording, unpacked.
inline std::vector<Host::S_ReplayPiece> PiecesOf(const std::filesystem::path& file,
                                                 Host::C_ReplayReader::t_MaxGap maxGap = {}) {
  Host::C_ReplayReader reader({file.native()}, maxGap);
  std::vector<Host::S_ReplayPiece> pieces;
  for (Host::S_ReplayPiece piece; reader.Next(piece) == Host::C_ReplayReader::eRead::Piece;) pieces.push_back(piece);
  return pieces;
}

inline std::string BytesOf(const std::filesystem::path& file) {
  std::string bytes;
  for (const Host::S_ReplayPiece& piece : PiecesOf(file)) bytes.append(piece.bytes.begin(), piece.bytes.end());
  return bytes;
}

// "D5 G100 E": kinds and lengths of an index.
inline std::string IndexText(const std::filesystem::path& name) {
  Host::C_IndexReader index;
  if (!index.Open(name.native())) return "none";
  std::string text;
  while (const auto record = index.Next()) {
    text += (text.empty() ? "" : " ") + std::string(1, "DGRCUE"[static_cast<int>(record->kind)]);
    if (record->length > 0) text += std::to_string(record->length);
  }
  return text;
}

class Recordings : public Program {
 protected:
  // The recordings in the directory, indexes left out.
  std::vector<std::filesystem::path> Files() const {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_directory))
      if (entry.is_regular_file() && entry.path().extension() != ".idx") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
  }
  std::map<std::string, std::string> Contents() const {
    std::map<std::string, std::string> contents;
    for (const auto& file : Files()) contents[file.filename().native()] = BytesOf(file);
    return contents;
  }

  // The options with names in the directory.
  Host::S_RecorderOptions Options(const std::string& name = "%n_%H%M%S.bin") const {
    Host::S_RecorderOptions options;
    options.pattern = (m_directory / name).native();
    return options;
  }

  void Begin(const Host::S_RecorderOptions& options) {
    m_recorder = std::make_unique<Host::C_Recorder>(options, m_sync, [this] { return m_now; });
    m_recorder->BeginInput("rx");
  }
  void Pass(std::chrono::microseconds time) {
    m_now.utc += time;
    m_now.steady += time;
  }
  void Send(std::string_view bytes) {
    m_recorder->Feed({{reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}, m_now.utc, true});
  }
  void End() {
    m_recorder->EndInput();
    m_sync.Drain();
  }

  Host::S_RecordMoment m_now{kNoon, Host::t_SteadyTime(std::chrono::hours(1))};
  Host::C_SyncThread m_sync;
  std::unique_ptr<Host::C_Recorder> m_recorder;
};

#endif  // VELAGNSS_TESTS_RECORDINGS_H
