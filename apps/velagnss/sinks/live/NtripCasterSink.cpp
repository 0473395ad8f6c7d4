#include "apps/velagnss/sinks/live/NtripCasterSink.h"

#include <fmt/core.h>

#include <algorithm>

#include "apps/velagnss/net/ntrip/NtripClient.h"
#include "apps/velagnss/net/ntrip/Request.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/sinks/live/Casters.h"
#include "apps/velagnss/sinks/live/ReaderSink.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using eWeight = S_SinkMessage::eWeight;

std::string OptionOf(const S_Address& address, const std::string& name, const std::string& preset) {
  const auto option = address.options.find(name);
  return option == address.options.end() ? preset : option->second;
}

// What the stream holds is for the user to say: nothing is known of it when the first reader asks.
std::string TableRecord(const S_Address& address) {
  const std::string mount = address.path.substr(1);
  const bool isOpen = OptionOf(address, "users", {}).empty();
  return fmt::format("STR;{};{};{};;2;{};none;{};{};{};0;0;velagnss {};none;{};N;0;none", mount,
                     OptionOf(address, "name", mount), OptionOf(address, "format", "RTCM 3"),
                     OptionOf(address, "systems", "GNSS"), OptionOf(address, "country", ""),
                     OptionOf(address, "latitude", "0.00"), OptionOf(address, "longitude", "0.00"), VELAGNSS_VERSION,
                     isOpen ? "N" : "B");
}

class C_NtripCasterSink : public C_ReaderSink {
 public:
  explicit C_NtripCasterSink(const S_SinkMaking& making)
      : C_ReaderSink(making), m_address(WithNtripPort(making.address)), m_casters(making.casters) {}

 protected:
  bool Prepare() override;
  void Begin() override {}
  void StopListening() override { m_casters.Close(); }
  void OnTick(t_Clock::time_point now) override {
    C_ReaderSink::OnTick(now);
    m_casters.CheckProgress(now);
  }

 private:
  void OnReader(C_Readers::S_Newcomer newcomer);

  S_Address m_address;
  C_Casters& m_casters;
};

bool C_NtripCasterSink::Prepare() {
  const std::string users = OptionOf(m_address, "users", {});
  std::string error = users.empty() ? std::string() : CheckUsers(users);
  if (error.empty())
    error = m_casters.Add(m_address,
                          {.record = TableRecord(m_address),
                           .users = users,
                           .onReader = [this](C_Readers::S_Newcomer newcomer) { OnReader(std::move(newcomer)); }});
  if (!error.empty()) ReportError(Name() + ": " + error);
  return error.empty();
}

void C_NtripCasterSink::OnReader(C_Readers::S_Newcomer newcomer) {
  if (!IsFinishing()) AddReader(std::move(newcomer));
}

// What has these characters would break the line of the table.
bool IsField(const std::string& value) { return value.find_first_of(";\"") == std::string::npos; }
template <int Most>
bool IsDegrees(const std::string& value) {
  double degrees = 0;
  return ParseWhole(value, degrees) && degrees >= -Most && degrees <= Most;
}
bool IsFile(const std::string& value) { return !value.empty(); }

constexpr S_AddressOption kOptions[] = {
    {"users", "the name of a file with lines USER:PASSWORD", &IsFile},
    {"name", "a text without ';' and '\"'", &IsField},
    {"format", "a text without ';' and '\"'", &IsField},
    {"systems", "a text without ';' and '\"', such as GPS+GLO", &IsField},
    {"country", "a text without ';' and '\"', such as DEU", &IsField},
    {"latitude", "a number of degrees from -90 to 90", &IsDegrees<90>},
    {"longitude", "a number of degrees from -180 to 180", &IsDegrees<180>},
};

std::string Check(const S_Address& address) { return CheckMount(std::string_view(address.path).substr(1)); }

}  // namespace

using eNeed = S_AddressForm::eNeed;

const S_SinkKind kNtripCasterSink = {{.scheme = "ntrip-caster",
                                      .example = "ntrip-caster://ADDRESS:PORT/MOUNT",
                                      .host = eNeed::Maybe,
                                      .port = eNeed::Maybe,
                                      .path = eNeed::Must,
                                      .options = kOptions,
                                      .check = &Check},
                                     &MakeSinkOf<C_NtripCasterSink>,
                                     eRawUse::OnRequest};

}  // namespace Host
