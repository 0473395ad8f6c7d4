// Something that makes text for an output: records as JSON, tracks, tables.
#ifndef VELAGNSS_APPS_TEXT_MAKER_H
#define VELAGNSS_APPS_TEXT_MAKER_H

#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace Host {

// The text waits here until an output takes it, so that lines are written many at a time.
class C_TextMaker {
 public:
  virtual ~C_TextMaker() = default;

  // Whole lines that have not been written yet.
  virtual std::string_view Text() const = 0;
  virtual void ClearText() = 0;

  // Takes the text, so that a maker of much text at once needs not hold it all. Without one the text
  // waits.
  using t_Drain = std::function<void(std::string_view text)>;
  void SetDrain(t_Drain drain) { m_drain = std::move(drain); }

  // Puts what comes from here on into a file of this name, for makers of several files.
  using t_NextFile = std::function<void(const std::string& name)>;
  void SetNextFile(t_NextFile nextFile) { m_nextFile = std::move(nextFile); }

 protected:
  // Where a lot of text may have come together.
  void Drain() {
    if (m_drain && Text().size() >= kDrainSize) PourOut();
  }

  // Text from elsewhere that follows what waits here. False, and nothing done, when there is no drain.
  bool PassOn(std::string_view text) {
    if (!m_drain) return false;
    PourOut();
    m_drain(text);
    return true;
  }

  void BeginFile(const std::string& name) {
    if (m_nextFile) m_nextFile(name);
  }

 private:
  void PourOut() {
    m_drain(Text());
    ClearText();
  }

  static constexpr std::size_t kDrainSize = 1 << 16;

  t_Drain m_drain;
  t_NextFile m_nextFile;
};

// The usual one: a string.
class C_TextBuffer : public C_TextMaker {
 public:
  std::string_view Text() const override { return m_text; }
  void ClearText() override { m_text.clear(); }

 protected:
  std::string m_text;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_TEXT_MAKER_H
