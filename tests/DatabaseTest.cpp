// Lines as rows of a database.
#include <fmt/format.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <random>

#include "apps/velagnss/pipeline/RecordRun.h"
#include "apps/velagnss/relay/UnitMaker.h"
#include "apps/velagnss/sinks/database/RowStore.h"
#include "apps/velagnss/sinks/database/Schema.h"
#include "tests/Cases.h"
#include "tests/ProgramRun.h"

namespace Host {
namespace {

struct S_Name {
  const char* name;
  const char* protocol;
  const char* message;
  const char* table;
};
constexpr S_Name kNames[] = {
    {"Sentence", "nmea", "GGA", "nmea_gga"},      {"Number", "rtcm3", "RTCM1077", "rtcm3_1077"},
    {"Block", "bin", "BIN95", "bin_95"},          {"OnlyTheProtocol", "jrox", "JROX", "jrox"},
    {"OtherProtocol", "pkvn", "GBS", "pkvn_gbs"}, {"ShorterThanTheProtocol", "nmea", "NM", "nmea_nm"},
};
TEST_ROWS(Database, TableName, kNames, row) { EXPECT_EQ(TableName(row.protocol, row.message), row.table); }

struct S_Value {
  const char* name;
  const char* json;
  decltype(S_RowCell::value) value;
};
const S_Value kValues[] = {
    {"Null", "null", {}},
    {"True", "true", std::int64_t{1}},
    {"Whole", "-42", std::int64_t{-42}},
    {"Real", "-4.25e1", -42.5},
    {"BeyondSigned", "18446744073709551615", 18446744073709551615.0},
    {"BeyondUnsigned", "100000000000000000000", 1e20},
    {"Text", R"("GGA")", std::string_view("GGA")},
    {"Escaped", R"("a\"],\u00e9")", std::string_view("a\"],\xC3\xA9")},
    {"Array", R"([{"a":"]"},[2]])", std::string_view(R"([{"a":"]"},[2]])")},
};
// As one of many lines, and as the last one, which ends with its bytes.
TEST_ROWS(DatabaseCells, ValueOfMember, kValues, row) {
  const std::string line = fmt::format(R"({{"a":{},"b":{{"c":1}}}})", row.json);
  C_RowCells cells;
  const std::string lines = line + '\n' + line + '\n' + line;
  cells.SetLines(lines);
  for (int number = 0; number < 3; ++number) {
    ASSERT_TRUE(cells.Next());
    ASSERT_EQ(cells.All().size(), 2);
    EXPECT_TRUE(cells.All()[0].value == row.value);
    EXPECT_EQ(cells.All()[1].name, "b_c");
  }
  EXPECT_FALSE(cells.Next());
}

// All members of frames and epochs that have a name with a meaning.
TEST(Database, TypesAreThoseOfTheSchema) {
  std::ifstream file(VELAGNSS_SOURCE_DIR "/docs/velagnss.schema.json");
  const nlohmann::json schema = nlohmann::json::parse(file);
  std::set<std::string> definitions = {"epoch", "rejected", "skipped", "source"};
  for (const auto& [name, definition] : schema["$defs"].items())
    if (std::isupper(static_cast<unsigned char>(name[0]))) definitions.insert(name);
  std::size_t numbers = 0;
  for (const std::string& definition : definitions)
    for (const auto& [name, member] : schema["$defs"][definition]["properties"].items()) {
      const nlohmann::json& type = member.value("type", nlohmann::json());
      const nlohmann::json& first = type.is_array() ? type[0] : type;
      if (name.starts_with("field") || (first != "number" && first != "integer")) continue;
      ++numbers;
      EXPECT_EQ(ColumnType(name, "INTEGER"), first == "number" ? "REAL" : "INTEGER") << definition << '.' << name;
    }
  EXPECT_GT(numbers, 200);
}

class DatabaseRows : public Program {
 protected:
  // The sample as pieces of a few units.
  static std::vector<t_Piece> Pieces() {
    const auto units = MakeUnits(eUnits::Rows, {}, false);
    units->SetInput(std::make_shared<const S_InputOrigin>(S_InputOrigin{"session.bin", "0123"}));
    C_RecordRun run({{C_RawDataMessage::eAllProtocols}, std::nullopt}, {&units->Consumer()});
    const std::string bytes = Slurp(VELAGNSS_SOURCE_DIR "/samples/session.bin");
    std::vector<t_Piece> pieces;
    const auto take = [&] {
      if (const t_Piece piece = units->Take()) pieces.push_back(piece);
    };
    run.BeginInput("session.bin");
    for (std::size_t at = 0; at < bytes.size(); at += 1'000) {
      const std::size_t size = std::min<std::size_t>(1'000, bytes.size() - at);
      run.Feed({{reinterpret_cast<const unsigned char*>(bytes.data()) + at, size}, {}, false});
      take();
    }
    run.EndInput();
    take();
    return pieces;
  }

  static S_Piece PieceOf(std::string lines) {
    S_Piece piece;
    piece.input = std::make_shared<const S_InputOrigin>(S_InputOrigin{"a", "b"});
    piece.bytes = std::move(lines);
    piece.EndUnit();
    return piece;
  }

  std::string Store(const std::string& name, const std::vector<t_Piece>& pieces, std::size_t commitEvery) const {
    const std::string file = m_directory / name;
    const std::atomic<bool> isStopping = false;
    C_RowStore store(file, isStopping);
    for (std::size_t number = 0; number < pieces.size(); ++number) {
      store.Put(*pieces[number]);
      if (number % commitEvery == 0) store.Commit();
    }
    store.Commit();
    return Dump(file);
  }

  // Every value of every table, with its type; the order of the columns depends on that of the rows.
  static std::string Dump(const std::string& file) {
    const std::atomic<bool> isStopping = false;
    C_Sqlite database(file, isStopping);
    C_Statement tables = database.Prepare(
        "SELECT m.name, group_concat(quote(c.name) || ' || quote(\"' || c.name || '\")', ' || ')"
        " FROM sqlite_master m, (SELECT t.name AS t, p.name FROM sqlite_master t, pragma_table_info(t.name) p"
        " ORDER BY p.name) c WHERE m.type = 'table' AND c.t = m.name AND m.name NOT IN ('inputs', 'tables')"
        " GROUP BY m.name ORDER BY m.name");
    std::string text;
    while (tables.Step()) {
      text += tables.Text(0) + '\n';
      C_Statement rows = database.Prepare("SELECT " + tables.Text(1) + " FROM \"" + tables.Text(0) + "\" ORDER BY 1");
      while (rows.Step()) text += rows.Text(0) + '\n';
    }
    return text;
  }
};

TEST_F(DatabaseRows, OrderAndRepetitionDoNotMatter) {
  std::vector<t_Piece> pieces = Pieces();
  ASSERT_GT(pieces.size(), 300);
  const std::string expected = Store("a.db", pieces, 1'000);
  EXPECT_GT(expected.size(), 2'000'000);
  std::mt19937 random(11);  // NOLINT(cert-msc32-c,cert-msc51-cpp): repeatable
  for (const char* name : {"b.db", "c.db"}) {
    const std::vector<t_Piece> again(pieces.begin(), pieces.begin() + 100);
    pieces.insert(pieces.end(), again.begin(), again.end());
    std::shuffle(pieces.begin(), pieces.end(), random);
    EXPECT_TRUE(Store(name, pieces, 7) == expected) << name;
  }
}

// More messages than a view may join, with names that SQL could take for its own.
TEST_F(DatabaseRows, TablesAreLimitedAndTheirNamesQuoted) {
  std::string lines;
  for (int number = 0; number < 600; ++number)
    lines += "{\"offset\":" + std::to_string(number) + R"(,"length":9,"protocol":"nmea","message":"\"'];--)" +
             std::to_string(number) + R"(","result":0,"decoded":"full","fields":{"a_m":1}})" + '\n';
  const S_Piece piece = PieceOf(lines);
  const std::string file = m_directory / "many.db";
  const std::atomic<bool> isStopping = false;
  C_RowStore(file, isStopping).Put(piece);
  {
    C_RowStore store(file, isStopping);
    store.Put(piece);
    store.Commit();
    EXPECT_EQ(store.RowsNew(), 600);
  }
  C_Sqlite database(file, isStopping);
  EXPECT_EQ(database.Number("SELECT count(DISTINCT message) FROM frames"), 600);
  EXPECT_LT(database.Number("SELECT count(*) FROM sqlite_master WHERE type = 'table'"), 450);
  EXPECT_GT(database.Number("SELECT count(*) FROM other"), 100);
}

// A live source may be cut off in mid-frame and go on: that end remains. One that an earlier run met is gone.
TEST_F(DatabaseRows, EndsOfEarlierRunsAreForgotten) {
  const auto frame = [](int offset) {
    return fmt::format(R"({{"offset":{},"length":5,"protocol":"nmea","message":"GGA","result":0}})", offset) + '\n';
  };
  const std::string frames = frame(5) + frame(20);
  const std::string end = R"({"event":"skipped","offset":10,"length":4,"why":"cut off at the end of the input"})";
  const std::string file = m_directory / "ends.db";
  const std::atomic<bool> isStopping = false;
  for (const auto& [lines, ends] : {std::pair(end + '\n' + frames, 1), std::pair(frames, 0)}) {
    C_RowStore store(file, isStopping);
    store.Put(PieceOf(lines));
    store.Commit();
    EXPECT_EQ(C_Sqlite(file, isStopping).Number("SELECT count(*) FROM skipped"), ends);
  }
}

}  // namespace
}  // namespace Host
