#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <sstream>

#include "bits.h"
#include "text.h"
#include "vexo.h"

namespace {

using Row = std::vector<float>; // the level, then X, Y, Z of red, green, blue; missing numbers are kUnset

const float kUnset = -7;

vexo_lcnr record_of(const std::vector<Row> &rows) {
  vexo_lcnr lcnr;
  std::fill_n(&lcnr.data[0][0][0], 9 * 64, kUnset);
  std::fill_n(lcnr.sample, 64, kUnset);
  lcnr.num = static_cast<int>(rows.size());
  for (size_t i = 0; i < rows.size(); i++) {
    for (size_t n = 0; n < rows[i].size(); n++) {
      (n == 0 ? lcnr.sample : lcnr.data[(n - 1) / 3][(n - 1) % 3])[i] = rows[i][n];
    }
  }
  return lcnr;
}

std::string with_file(const std::string &text, const std::function<void(const char *path)> &use) {
  const TemporaryFolder folder;
  const std::string path = folder.path("ramp \xC3\xA4.xml");
  std::ofstream(path, std::ios::binary) << text;
  use(path.c_str());
  std::ostringstream left;
  left << std::ifstream(path, std::ios::binary).rdbuf();
  return left.str();
}

TEST(Lcnr, LoadUnderAnyLocale) {
  const Row full = {1.5F, 0.25F, 3, 4, 5, 6, 7, 8, 9, 10.125F};
  const std::string numbers = "1.5,0.25,3,4,5,6,7,8,9,10.125";
  const std::string level = "<LEVEL>" + numbers + "</LEVEL>";
  const std::string blanks(1003, ' '); // after "<LCNR><LEVEL>" and before seven characters that end a buffer
  const struct {
    std::string text;
    std::vector<Row> rows;
  } files[] = {{"<LCNR>\n" + level + "\n<LEVEL>0,1</LEVEL>\n</LCNR>", {full, {0, 1}}},
               {"<?xml version='1.0'?>\r\n<x>9\r\n" + level + "\r\n<LEVEL n='1'/>9</x>\r\n\r\n", {full}},
               {"<LCNR/>", {}},
               {"<LCNR><level>1</level><LEVELS>2</LEVELS></LCNR>", {}},
               {"<LCNR><LEVEL>1<LEVEL>2</LEVEL>3<x>4</x></LEVEL>5</LCNR>", {{1}, {2}, {3}, {4}}},
               {"<LCNR><LEVEL><![CDATA[" + numbers + "]]></LEVEL></LCNR>", {full}},
               {"<LCNR><LEVEL>1,2,<!-- 3, -->4,5</LEVEL></LCNR>", {{1, 2}, {4, 5}}},
               {"<LCNR><LEVEL>\n1,2,3,\n4,5</LEVEL></LCNR>", {{}, {1, 2, 3}, {}, {4, 5}}},
               {"<LCNR><LEVEL>1,2&#51;,4</LEVEL></LCNR>", {{1, 2}, {3}, {}}},
               {"<LCNR><LEVEL>1,2 ,3</LEVEL><LEVEL> 1,\t2, 3</LEVEL><LEVEL>x</LEVEL></LCNR>", {{1, 2}, {1, 2, 3}, {}}},
               {"<LCNR><LEVEL>nan,inf,-5,1e400,.5,+2,0x10,1.,1E-2</LEVEL></LCNR>",
                {{NAN, INFINITY, -5, INFINITY, 0.5F, 2, 16, 1, 0.01F}}},
               {"<LCNR><LEVEL>" + blanks + "1,2,3,4" + "5,6,7</LEVEL></LCNR>", {{1, 2, 3, 4}, {5, 6, 7}}},
               {"<LCNR><LEVEL>" + blanks + "1,2,3,</LEVEL>4" + level + "</LCNR>", {{1, 2, 3}, full}},
               {"<!DOCTYPE x [<!ENTITY e '" + blanks + blanks + numbers + "'>]>\n<x><LEVEL>&e;</LEVEL></x>", {full}},
               {"<LCNR>" + repeated(70, level + "\n") + "</LCNR>", std::vector<Row>(64, full)}};
  in_both_locales([&] {
    for (const auto &file : files) {
      with_file(file.text, [&](const char *path) {
        vexo_lcnr lcnr = record_of({});
        EXPECT_EQ(diagnostics([&] { EXPECT_EQ(vexo_load_lcnr_xml(&lcnr, path), 0); }), "");
        EXPECT_EQ(bits_of(lcnr), bits_of(record_of(file.rows))) << file.text.substr(0, 200);
      });
    }
  });
}

TEST(Lcnr, RefusedFiles) {
  const std::string broken = "Parse error at line ";
  const std::string invalid = ":\nnot well-formed (invalid token)\n";
  std::string laughs = "<!DOCTYPE x [<!ENTITY l '1,2,3'>"; // a thousand million of them
  for (int i = 1; i < 10; i++) {
    const std::string name(static_cast<size_t>(i), 'l');
    laughs += "<!ENTITY l" + name + " '" + repeated(10, "&" + name + ";") + "'>";
  }
  const struct {
    std::string text, message;
  } files[] = {{laughs + "]>\n<x><LEVEL>&llllllllll;</LEVEL></x>",
                broken + "2:\nlimit on input amplification factor (from DTD and entities) breached\n"},
               {repeated(100000, "<LEVEL>"), broken + "1:\nno element found\n"},
               {"", broken + "1:\nno element found\n"},
               {"<LCNR>\n<LEVEL>1,2</LEVEL>\n", broken + "3:\nno element found\n"},
               {"<LCNR>\n<LEVEL>1,2", broken + "2:\nno element found\n"},
               {"<LCNR>\n\n</LEVEL></LCNR>", broken + "3:\nmismatched tag\n"},
               {"<LCNR></LCNR>\n<LCNR/>", broken + "2:\njunk after document element\n"},
               {std::string("<LCNR>\n<LEVEL>1\0</LEVEL></LCNR>", 31), broken + "2" + invalid},
               {"<LCNR>\xFF</LCNR>", broken + "1" + invalid},
               {"1,2,3\n", broken + "1:\nsyntax error\n"}};
  vexo_lcnr lcnr = record_of({});
  const auto message = [&](const char *path) {
    return diagnostics([&] { EXPECT_EQ(vexo_load_lcnr_xml(&lcnr, path), -1); });
  };
  for (const auto &file : files) {
    with_file(file.text, [&](const char *path) { EXPECT_EQ(message(path), file.message); });
  }
  EXPECT_EQ(message("/nonexistent/ramp.xml"), "Failed to open /nonexistent/ramp.xml\n");
  EXPECT_EQ(message("/"), "Read error\n");
}

TEST(Lcnr, StoreAndDumpUnderAnyLocale) {
  const Row row = {0.5F, 0.0000004F, -1, 100.1F, 5, 6, 7, 8, 1e9F, 0.0625F};
  const std::string line = "<LEVEL>0.500000,0.000000,-1.000000,100.099998,5.000000,6.000000,7.000000,8.000000,"
                           "1000000000.000000,0.062500</LEVEL>\n";
  const std::string table_line = "0.500\t0.000\t-1.000\t100.100\t5.000\t6.000\t7.000\t8.000\t1000000000.000\t0.062\n";
  const struct { int num, written; } counts[] = {{-1, 0}, {0, 0}, {2, 2}, {65, 64}}; // 64 rows at most
  in_both_locales([&] {
    vexo_lcnr lcnr = record_of(std::vector<Row>(64, row));
    for (const auto &count : counts) {
      lcnr.num = count.num;
      const std::string file = with_file("something longer than before", [&](const char *path) {
        EXPECT_EQ(vexo_store_lcnr_xml(&lcnr, path), 0);
        vexo_lcnr loaded = record_of({});
        EXPECT_EQ(vexo_load_lcnr_xml(&loaded, path), 0);
        Row rounded = row;
        rounded[1] = 0;
        EXPECT_EQ(bits_of(loaded), bits_of(record_of(std::vector<Row>(static_cast<size_t>(count.written), rounded))));
      });
      EXPECT_EQ(file, "<LCNR>\n" + repeated(count.written, line) + "</LCNR>");
      char name[] = "Panel";
      for (char *prefix : {name, static_cast<char *>(nullptr)}) {
        EXPECT_EQ(printed([&](FILE *f) { vexo_lcnr_dump(f, &lcnr, prefix); }),
                  dump_heading(prefix, "LCNR", &lcnr) + "Level\tXr\tYr\tZr\tXg\tYg\tZg\tXb\tYb\tZb\n" +
                      repeated(count.written, table_line));
      }
    }
    EXPECT_EQ(diagnostics([&] { EXPECT_EQ(vexo_store_lcnr_xml(&lcnr, "/nonexistent/ramp.xml"), -1); }), "");
  });
}

TEST(Lcnr, SanityCheckNamesTheFirstFall) {
  vexo_lcnr lcnr =
      record_of({{9, 1, 1, 1, 1, 1, 1, 1, 1, 1}, {3, 1, 1, 1, 2, 2, 2, 1, 1, 1}, {1, 1, 1, 1, 2, 2, 3, 1, NAN}});
  const auto check = [&] {
    int status = 1;
    const std::string message = diagnostics([&] { status = vexo_lcnr_sanity_check(&lcnr); });
    EXPECT_EQ(status, message.empty() ? 0 : -1);
    return message;
  };
  EXPECT_EQ(check(), "Illegal value detect at 2:2:1\n");
  for (int num : {-1, 0, 1, 2}) {
    lcnr.num = num;
    EXPECT_EQ(check(), "") << num;
  }
  lcnr.num = 3;
  lcnr.data[1][2][0] = 2.5F;
  lcnr.data[1][1][2] = 1.5F;
  EXPECT_EQ(check(), "Illegal value detect at 1:1:1\n");
  lcnr = record_of(std::vector<Row>(64, Row(10, 1)));
  lcnr.data[0][0][63] = 0;
  lcnr.num = 65;
  EXPECT_EQ(check(), "Illegal value detect at 0:0:62\n");
}

} // namespace
