// Tracks in the formats of `velagnss convert`, read by other means than those that wrote them. Each reader gives a line
// per point: time, latitude, longitude, altitude, fix, satellites, hdop; "-" for what is not there.
#ifndef VELAGNSS_TESTS_TRACK_READER_H
#define VELAGNSS_TESTS_TRACK_READER_H

#include <fmt/core.h>
#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

using t_Points = std::vector<std::string>;
using t_Rows = std::vector<std::vector<std::string>>;

inline std::string OrDash(const char* text) { return text == nullptr || *text == '\0' ? "-" : text; }

inline std::string PointLine(const std::string& time, const std::string& latitude, const std::string& longitude,
                             const std::string& altitude, const std::string& fix, const std::string& satellites,
                             const std::string& hdop) {
  return fmt::format("{} {} {} {} {} {} {}", time, latitude, longitude, altitude, fix, satellites, hdop);
}

// A record ends with CR LF and has as many fields as the first (RFC 4180). Nothing in a track needs quotes.
inline t_Rows ReadCsv(const std::string& text) {
  t_Rows rows;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_TRUE(line.ends_with('\r') && line.find_first_of("\"\r") == line.size() - 1) << line;
    line.back() = ',';
    std::istringstream stream(line);
    std::vector<std::string>& fields = rows.emplace_back();
    for (std::string field; std::getline(stream, field, ',');) fields.push_back(field);
    EXPECT_EQ(fields.size(), rows[0].size()) << line;
  }
  return rows;
}

inline t_Points CsvPoints(const std::string& text) {
  t_Points points;
  const t_Rows rows = ReadCsv(text);
  for (std::size_t row = 1; row < rows.size(); ++row) {
    std::vector<std::string> f = rows[row];
    for (std::string& field : f) field = OrDash(field.c_str());
    points.push_back(PointLine(f.at(1), f.at(2), f.at(3), f.at(4), f.at(6), f.at(7), f.at(8)));
  }
  return points;
}

// The elements of a name below an element, at any depth.
inline std::vector<const tinyxml2::XMLElement*> Elements(const tinyxml2::XMLElement* parent, const std::string& name) {
  std::vector<const tinyxml2::XMLElement*> found;
  for (const auto* child = parent->FirstChildElement(); child != nullptr; child = child->NextSiblingElement()) {
    if (child->Name() == name) found.push_back(child);
    for (const auto* inner : Elements(child, name)) found.push_back(inner);
  }
  return found;
}

inline t_Points GpxPoints(const std::string& text) {
  tinyxml2::XMLDocument document;
  EXPECT_EQ(document.Parse(text.data(), text.size()), tinyxml2::XML_SUCCESS) << document.ErrorStr();
  const auto* gpx = document.RootElement();
  EXPECT_STREQ(gpx->Name(), "gpx");
  EXPECT_STREQ(gpx->Attribute("xmlns"), "http://www.topografix.com/GPX/1/1");
  EXPECT_STREQ(gpx->Attribute("version"), "1.1");
  t_Points points;
  for (const auto* point : Elements(gpx, "trkpt")) {
    EXPECT_STREQ(point->Parent()->Value(), "trkseg");
    const auto text_of = [point](const char* name) {
      const auto* element = point->FirstChildElement(name);
      return OrDash(element == nullptr ? nullptr : element->GetText());
    };
    points.push_back(PointLine(text_of("time"), point->Attribute("lat"), point->Attribute("lon"), text_of("ele"),
                               text_of("fix"), text_of("sat"), text_of("hdop")));
  }
  return points;
}

inline t_Points KmlPoints(const std::string& text) {
  tinyxml2::XMLDocument document;
  EXPECT_EQ(document.Parse(text.data(), text.size()), tinyxml2::XML_SUCCESS) << document.ErrorStr();
  EXPECT_STREQ(document.RootElement()->Attribute("xmlns"), "http://www.opengis.net/kml/2.2");
  t_Points points;
  for (const auto* place : Elements(document.RootElement(), "Placemark")) {
    const auto times = Elements(place, "when");
    const auto values = Elements(place, "gx:value");
    const bool isTrack = place->FirstChildElement("gx:Track") != nullptr;
    std::string positions;
    for (const auto* coordinates : Elements(place, isTrack ? "gx:coord" : "coordinates"))
      positions += std::string(coordinates->GetText()) + "\n";
    if (!isTrack) std::replace(positions.begin(), positions.end(), ',', ' ');
    const bool isOnGround = std::string_view("clampToGround") == Elements(place, "altitudeMode").at(0)->GetText();
    std::istringstream stream(positions);
    std::string longitude;
    std::string latitude;
    std::string altitude;
    for (std::size_t i = 0; stream >> longitude >> latitude >> altitude; ++i) {
      const auto value = [&](std::size_t array) {  // fix, satellites, hdop: one array after the other
        return isTrack ? OrDash(values.at(array * times.size() + i)->GetText()) : "-";
      };
      points.push_back(PointLine(isTrack ? times.at(i)->GetText() : "-", latitude, longitude,
                                 isOnGround ? "-" : altitude, value(0), value(1), value(2)));
    }
  }
  return points;
}

inline t_Points GeoJsonPoints(const std::string& text) {
  const auto document = nlohmann::json::parse(text);
  EXPECT_EQ(document.at("type"), "FeatureCollection");
  t_Points points;
  for (const auto& feature : document.at("features")) {
    EXPECT_EQ(feature.at("type"), "Feature");
    const auto& position = feature.at("geometry").at("coordinates");
    if (feature.at("geometry").at("type") != "Point") continue;
    const auto degrees = [&](std::size_t i) { return fmt::format("{:.9f}", position.at(i).get<double>()); };
    const auto value = [&](const char* name) -> std::string {
      const auto& member = feature.at("properties").at(name);
      return member.is_null() ? "-" : member.is_string() ? member.get<std::string>() : member.dump();
    };
    points.push_back(PointLine(value("time_utc"), degrees(1), degrees(0),
                               position.size() == 3 ? position.at(2).dump() : "-", value("fix"), value("satellites"),
                               value("hdop")));
  }
  return points;
}

#endif  // VELAGNSS_TESTS_TRACK_READER_H
