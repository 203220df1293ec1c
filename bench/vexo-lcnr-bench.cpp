// The measurement file, beside a bare parse of the same text, a line at a time, with handlers that do nothing.
#include <benchmark/benchmark.h>
#include <expat.h>

#include <cstdio>
#include <cstring>

#include "vexo.h"

namespace {

const char kPanel[] = VEXO_EXAMPLES "/sample-panel.xml";

void load(benchmark::State &state) {
  vexo_lcnr lcnr;
  for (auto _ : state) {
    vexo_load_lcnr_xml(&lcnr, kPanel);
    benchmark::DoNotOptimize(lcnr);
  }
}
BENCHMARK(load);

void XMLCALL element(void *, const XML_Char *, const XML_Char **) {}
void XMLCALL end_of_element(void *, const XML_Char *) {}
void XMLCALL text(void *, const XML_Char *, int) {}

void bare_parse(benchmark::State &state) {
  for (auto _ : state) {
    FILE *f = fopen(kPanel, "r");
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetElementHandler(parser, element, end_of_element);
    XML_SetCharacterDataHandler(parser, text);
    char line[1024];
    while (fgets(line, sizeof line, f) != nullptr) {
      XML_Parse(parser, line, static_cast<int>(strlen(line)), 0);
    }
    XML_Parse(parser, line, 0, 1);
    XML_ParserFree(parser);
    fclose(f);
  }
}
BENCHMARK(bare_parse);

} // namespace
