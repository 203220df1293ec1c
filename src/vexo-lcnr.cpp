// The LCNR measurement file: XML read through Expat, fixed text written. Numbers are single precision.
#include <expat.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "base/locale.h"
#include "base/numbers.h"
#include "base/owners.h"
#include "vexo-lcnr-streams.h"
#include "vexo-rows.h"

using vexo_internal::Block;
using vexo_internal::block_of;
using vexo_internal::Collector;
using vexo_internal::kRows;
using vexo_internal::NumberLocale;
using vexo_internal::OwnedFile;
using vexo_internal::Remark;
using vexo_internal::rows_of;

namespace {

const int kBuffer = 1024; // bytes of a line buffer, terminator included

// The ten fields of row i in file order: level, then X, Y, Z of red, green, blue.
struct Row {
  float *field[10];
};
Row row_fields(vexo_lcnr *lcnr, int i) {
  Row row = {{&lcnr->sample[i]}};
  for (int n = 0; n < 9; n++) {
    row.field[n + 1] = &lcnr->data[n / 3][n % 3][i];
  }
  return row;
}

// ---- Reading: the parser gets a line at a time; every piece of text that it finds inside a LEVEL is a row

struct FreeParser {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

// What the handlers of one load share.
struct LoadState {
  vexo_lcnr *lcnr;    // the record being filled
  int el_level;       // LEVEL elements open at this point of the document
  bool out_of_memory; // a piece of text could not be copied
  bool stopped;       // the collector has heard enough
  XML_Parser parser;
  const Collector *collector;

  void tell(Remark remark) {
    remark.line = static_cast<long>(XML_GetCurrentLineNumber(parser));
    stopped = stopped || !vexo_internal::tell(collector, remark);
  }
};

bool is_level(const char *el) { return strcmp(el, "LEVEL") == 0; }

void start_handler(void *data, const char *el, const char ** /*attr*/) {
  auto *state = static_cast<LoadState *>(data);
  if (is_level(el) && state->el_level++ == 0) {
    state->tell({Remark::element});
  }
}

void end_handler(void *data, const char *el) {
  if (is_level(el)) {
    static_cast<LoadState *>(data)->el_level--;
  }
}

// Reads a row as " %f,%f,%f,%f,%f,%f,%f,%f,%f,%f" does: a comma directly behind each number but the last. Fields from
// the first number that is missing on stay as they are.
Remark scan_row(const char *text, const char *limit, const Row &row) {
  int count = 0;
  for (float *field : row.field) {
    if (count > 0 && *text != ',') {
      break;
    }
    const char *end = vexo_internal::scan(count > 0 ? text + 1 : text, limit, field);
    if (end == nullptr) {
      break;
    }
    text = end;
    count++;
  }
  return Remark{Remark::row, 0, text, count, 10};
}

// The piece is not terminated, so the scan works on a copy. Only text of an entity can be longer than a line buffer.
void data_handler(void *data, const XML_Char *s, int len) {
  auto *state = static_cast<LoadState *>(data);
  vexo_lcnr *lcnr = state->lcnr;
  if (state->el_level <= 0) {
    return;
  }
  if (lcnr->num >= kRows) {
    state->tell({Remark::too_many});
    return;
  }
  const auto length = static_cast<size_t>(len);
  char line[kBuffer];
  const Block<char> longer = length < sizeof line ? nullptr : block_of<char>(length + 1);
  char *text = length < sizeof line ? line : longer.get();
  if (text == nullptr) {
    state->out_of_memory = true;
    return;
  }
  memcpy(text, s, length);
  text[length] = '\0';
  state->tell(scan_row(text, text + length, row_fields(lcnr, lcnr->num)));
  lcnr->num++;
}

// Reads as fgets does, NUL bytes included. Gives the length, or -1 where this read fails: an error that the stream has
// met before does not count.
int read_line(FILE *f, char (&line)[kBuffer]) {
  int length = 0;
  for (int c = 0; length < kBuffer - 1 && c != '\n';) {
    c = getc_unlocked(f);
    if (c == EOF) {
      return feof(f) != 0 ? length : -1;
    }
    line[length++] = static_cast<char>(c);
  }
  return length;
}

int refuse(const Collector *collector, const char *why, long line = 0) {
  vexo_internal::tell(collector, {Remark::refused, line, why});
  return -1;
}

int parse(FILE *f, const LoadState &state) {
  for (bool done = false; !done;) {
    char line[kBuffer];
    const int length = read_line(f, line);
    if (length < 0) {
      return refuse(state.collector, "Read error");
    }
    done = feof(f) != 0;
    if (XML_Parse(state.parser, line, length, done ? 1 : 0) != XML_STATUS_OK) {
      return refuse(state.collector, XML_ErrorString(XML_GetErrorCode(state.parser)),
                    static_cast<long>(XML_GetCurrentLineNumber(state.parser)));
    }
    if (state.out_of_memory) {
      return refuse(state.collector, "out of memory");
    }
    if (state.stopped) {
      return -1;
    }
  }
  return 0;
}

// What vexo_load_lcnr_xml() says of a file: only why it is refused.
bool print_refusal(void * /*user*/, const Remark &remark) {
  if (remark.kind == Remark::refused && remark.line > 0) {
    fprintf(stderr, "Parse error at line %d:\n%s\n", static_cast<int>(remark.line), remark.text);
  } else if (remark.kind == Remark::refused) {
    fprintf(stderr, "%s\n", remark.text);
  }
  return true;
}

} // namespace

int vexo_internal::read_lcnr(FILE *f, vexo_lcnr *lcnr, const Collector *collector) {
  const NumberLocale locale;
  const std::unique_ptr<XML_ParserStruct, FreeParser> parser(XML_ParserCreate(nullptr));
  if (parser == nullptr) {
    return refuse(collector, "Couldn't allocate memory for parser");
  }
  const Block<LoadState> state = block_of<LoadState>(1);
  if (state == nullptr) {
    return refuse(collector, "out of memory");
  }
  state[0] = LoadState{lcnr, 0, false, false, parser.get(), collector};
  lcnr->num = 0;
  XML_SetUserData(parser.get(), state.get());
  XML_SetElementHandler(parser.get(), start_handler, end_handler);
  XML_SetCharacterDataHandler(parser.get(), data_handler);
  return parse(f, state[0]);
}

int vexo_load_lcnr_xml(vexo_lcnr *lcnr, const char *path) {
  const OwnedFile f(fopen(path, "r"));
  if (f == nullptr) {
    fprintf(stderr, "Failed to open %s\n", path);
    return -1;
  }
  const Collector printer = {print_refusal, nullptr};
  return vexo_internal::read_lcnr(f.get(), lcnr, &printer);
}

// ---- Writing

namespace {

// Formats row i; numbers is a printf format of ten doubles. Text beyond the buffer is cut.
void format_row(char (&text)[kBuffer], const char *numbers, vexo_lcnr *lcnr, int i) {
  double d[10];
  const Row row = row_fields(lcnr, i);
  for (int n = 0; n < 10; n++) {
    d[n] = static_cast<double>(*row.field[n]);
  }
  snprintf(text, sizeof text, numbers, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7], d[8], d[9]);
}

} // namespace

void vexo_internal::write_lcnr(FILE *f, vexo_lcnr *lcnr) {
  const NumberLocale locale;
  fputs("<LCNR>\n", f);
  for (int i = 0; i < rows_of(lcnr); i++) {
    char line[kBuffer];
    format_row(line, "<LEVEL>%f,%f,%f,%f,%f,%f,%f,%f,%f,%f</LEVEL>\n", lcnr, i);
    fputs(line, f);
  }
  fputs("</LCNR>", f);
}

int vexo_store_lcnr_xml(vexo_lcnr *lcnr, const char *path) {
  const OwnedFile f(fopen(path, "w"));
  if (f == nullptr) {
    return -1;
  }
  vexo_internal::write_lcnr(f.get(), lcnr);
  return 0;
}

// ---- Checks and dumps

int vexo_lcnr_sanity_check(vexo_lcnr *lcnr) {
  for (int c = 0; c < 3; c++) {
    for (int m = 0; m < 3; m++) {
      for (int i = 0; i + 1 < rows_of(lcnr); i++) {
        if (lcnr->data[c][m][i] > lcnr->data[c][m][i + 1]) {
          fprintf(stderr, "Illegal value detect at %d:%d:%d\n", c, m, i);
          return -1;
        }
      }
    }
  }
  return 0;
}

void vexo_lcnr_dump(FILE *f, vexo_lcnr *lcnr, char *prefix) {
  const NumberLocale locale;
  if (prefix != nullptr) {
    fprintf(f, "%s LCNR(%p):\n", prefix, static_cast<void *>(lcnr));
  } else {
    fprintf(f, "LCNR(%p):\n", static_cast<void *>(lcnr));
  }
  fputs("Level\tXr\tYr\tZr\tXg\tYg\tZg\tXb\tYb\tZb\n", f);
  for (int i = 0; i < rows_of(lcnr); i++) {
    char line[kBuffer];
    format_row(line, "%3.3f\t%3.3f\t%3.3f\t%3.3f\t%3.3f\t%3.3f\t%3.3f\t%3.3f\t%3.3f\t%3.3f\n", lcnr, i);
    fputs(line, f);
  }
}
