#include "samples/Session.h"

namespace {

constexpr const char* kProtocolNames[] = {"JROX",        "RTCM3",  "NMEA0183", "VelaBIN",    "PKVN",   "VelaRD",
                                          "JSITERECORD", "CmdAck", "VelaJI",   "VelaJQUERY", "VelaGEO"};

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string Number(std::size_t value) { return std::to_string(value); }

// The texts as elements of a JSON array, `perLine` on each line, its closing bracket `indent` blanks from the left.
std::string Array(const std::vector<std::string>& elements, std::size_t perLine, std::size_t indent = 2) {
  const std::string lineStart = "\n" + std::string(indent, ' ');
  std::string json = "[";
  for (std::size_t index = 0; index < elements.size(); ++index) {
    if (index > 0) json += ", ";
    if (index % perLine == 0) json += lineStart + "  ";
    json += elements[index];
  }
  return json + lineStart + ']';
}

}  // namespace

C_Session::S_Place C_Session::Append(std::string_view bytes) {
  const S_Place place{m_bytes.size(), bytes.size()};
  m_bytes += bytes;
  return place;
}

// A reader would take leading CR and LF for the line end of the frame before, and the counts would no longer add up.
C_Session::S_Place C_Session::AppendStray(std::string_view bytes) {
  Require(!bytes.empty() && bytes[0] != '\r' && bytes[0] != '\n', "stray bytes begin with a line end");
  return Append(bytes);
}

void C_Session::Add(const S_Frame& frame) {
  const S_Place place = Append(frame.bytes);
  Append(frame.tail);
  m_frames.push_back({place, frame.protocol, frame.type});
  m_acceptedBytes += frame.bytes.size() + frame.tail.size();
  if (!frame.facts.empty())
    m_facts.push_back("{\"offset\": " + Number(place.offset) + ", \"length\": " + Number(place.length) +
                      ", \"message\": " + Quoted(frame.name) + ", " + frame.facts + '}');
  Count(frame);
}

void C_Session::Count(const S_Frame& frame) {
  auto& [name, frames] = m_counts[frame.protocol][frame.type];
  Require(name.empty() || name == frame.name, "two names for one message: " + frame.name);
  name = frame.name;
  ++frames;
}

void C_Session::AddNoise(std::string_view bytes) { m_noise.push_back(AppendStray(bytes)); }

void C_Session::AddFault(std::string_view bytes, std::string_view what, int result) {
  m_faults.push_back({AppendStray(bytes), std::string(what), result});
}

void C_Session::AddAcknowledgement(std::string_view text) { m_acknowledgements.push_back(AppendStray(text)); }

std::string C_Session::CountsJson() const {
  std::vector<std::string> protocols;
  for (const auto& [protocol, messages] : m_counts) {
    std::vector<std::string> counts;
    for (const auto& [type, count] : messages)
      counts.push_back("{\"type\": " + Number(type) + ", \"name\": " + Quoted(count.first) +
                       ", \"frames\": " + std::to_string(count.second) + '}');
    protocols.push_back("{\"protocol\": " + std::to_string(protocol) + ", \"name\": " +
                        Quoted(kProtocolNames[protocol]) + ", \"messages\": " + Array(counts, 3, 4) + '}');
  }
  return Array(protocols, 1);
}

std::string C_Session::FramesJson() const {
  std::vector<std::string> rows;
  for (const S_Found& frame : m_frames)
    rows.push_back('[' + Number(frame.offset) + ',' + Number(frame.length) + ',' + std::to_string(frame.protocol) +
                   ',' + Number(frame.type) + ']');
  return Array(rows, 8);
}

std::string C_Session::FaultsJson() const {
  std::vector<std::string> rows;
  for (const S_Fault& fault : m_faults)
    rows.push_back("{\"offset\": " + Number(fault.offset) + ", \"length\": " + Number(fault.length) +
                   ", \"what\": " + Quoted(fault.what) + ", \"result\": " + std::to_string(fault.result) + '}');
  return Array(rows, 1);
}

std::string C_Session::Manifest() const {
  const auto placesJson = [](const std::vector<S_Place>& places) {
    std::vector<std::string> rows;
    for (const S_Place& place : places) rows.push_back('[' + Number(place.offset) + ',' + Number(place.length) + ']');
    return Array(rows, 8);
  };
  return "{\n  \"totalBytes\": " + Number(m_bytes.size()) + ",\n  \"frames\": " + Number(m_frames.size()) +
         ",\n  \"bytesAccepted\": " + Number(m_acceptedBytes) +
         ",\n  \"bytesDiscarded\": " + Number(m_bytes.size() - m_acceptedBytes) + ",\n  \"counts\": " + CountsJson() +
         ",\n  \"frameList\": " + FramesJson() + ",\n  \"faults\": " + FaultsJson() +
         ",\n  \"noise\": " + placesJson(m_noise) + ",\n  \"acknowledgements\": " + placesJson(m_acknowledgements) +
         ",\n  \"numbers\": " + Array(m_facts, 1) + "\n}\n";
}
