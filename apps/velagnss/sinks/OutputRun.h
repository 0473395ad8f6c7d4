// From inputs to an output: how every command opens, fills, flushes and closes it, and how its exit code comes about.
#ifndef VELAGNSS_APPS_OUTPUT_RUN_H
#define VELAGNSS_APPS_OUTPUT_RUN_H

#include <functional>
#include <string>

#include "apps/velagnss/input/Inputs.h"
#include "apps/velagnss/sinks/Output.h"
#include "apps/velagnss/text/TextMaker.h"

namespace Host {

// Whether `name` ("-" for standard output) can be an output of `input`: not when it is an input itself, a serial port
// that is not there, or a file while an input cannot be opened. Each of these is reported.
eExitCode CheckOutput(const std::string& name, const S_InputOptions& input);

//   C_OutputRun run;
//   if (const eExitCode code = run.Open(name, input); code != eExitOk) return code;
//   C_SomeJob job(...);
//   return run.Run(input, job, job.Text(), [&] { return job.Judge(); });
class C_OutputRun {
 public:
  // "-" is standard output. False, reported, when it cannot be written to.
  bool Open(const std::string& name) { return m_output.Open(name); }

  // The same for an output of `input`, after `CheckOutput`. What live sources give is in a file at once: they have no
  // end at which it could be complete.
  eExitCode Open(const std::string& name, const S_InputOptions& input);

  // For a maker of several files: they get their names from it, in `directory`, and end with ".gz" when they are
  // compressed.
  eExitCode OpenFiles(const std::string& directory, bool areCompressed, const S_InputOptions& input);

  C_Output& Output() { return m_output; }

  // What the data came to, once all of it has been read and written; reports to the user what is wrong with it.
  using t_Judge = std::function<eExitCode()>;

  // Feeds the inputs to `job` and writes what `text` then holds: when there is enough of it, before a wait, and at the
  // end. When inputs failed and none gave a byte, nothing is written, not even an empty document. Returns the exit
  // code, that of `judge` when nothing else has gone wrong.
  int Run(const S_InputOptions& input, C_StreamJob& job, C_TextMaker& text, const t_Judge& judge) {
    return Run(input, {job, text}, {}, judge);
  }

  // A job and where its text is.
  struct S_Maker {
    C_StreamJob& job;
    C_TextMaker& text;
  };

  // The same with a maker for each further live source (Inputs.h); all of them write to the output.
  using t_NextMaker = std::function<S_Maker()>;
  int Run(const S_InputOptions& input, S_Maker first, const t_NextMaker& next, const t_Judge& judge);

  // Writes `text`, for runs without inputs. Returns the exit code.
  int Write(C_TextMaker& text);

 private:
  void BeginFile(C_TextMaker& text, const std::string& name);

  C_Output m_output;
  std::string m_directory;  // of several files
  bool m_areCompressed = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_OUTPUT_RUN_H
