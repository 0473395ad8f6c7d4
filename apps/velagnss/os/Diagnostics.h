// Messages to the person at the terminal, on standard error.
//
// An error says what happened, where, and what to do. Records never go to standard error, messages never to standard
// output.
#ifndef VELAGNSS_APPS_DIAGNOSTICS_H
#define VELAGNSS_APPS_DIAGNOSTICS_H

#include <string>
#include <string_view>

namespace Host {

enum class eVerbosity { Quiet, Normal, Verbose };

// Set once by the arguments, read everywhere.
void SetVerbosity(eVerbosity verbosity);
eVerbosity Verbosity();

void ReportError(std::string_view message);    // always
void ReportWarning(std::string_view message);  // unless quiet
void ReportNotice(std::string_view message);   // likewise: good to know, nothing is wrong
void ReportDetail(std::string_view message);   // only when verbose
void ReportOutOfMemory() noexcept;             // without allocating any

// `text` made safe for a terminal: control characters and bytes from 0x7F on as "\xNN".
std::string Printable(std::string_view text);

// True when standard error is a terminal that obeys control sequences, not one of TERM=dumb: for colors and the
// progress line.
bool IsErrorATerminal();

// The end of "name: figures" that fits into `columns` with a column to spare: the name may lose its beginning, but no
// figure does. A figure that does not fit is left out.
std::string_view CutToColumns(std::string_view line, std::size_t columns);

// A line that overwrites itself, cut as above where the terminal is too narrow; empty clears it. Only for a terminal.
void ShowProgressLine(std::string_view line);

}  // namespace Host

#endif  // VELAGNSS_APPS_DIAGNOSTICS_H
