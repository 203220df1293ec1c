// The LCNR measurement file: XML read through Expat, fixed text written. Numbers are single precision.
#include <expat.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "base/lines.h"
#include "base/locale.h"
#include "base/numbers.h"
#include "vexo-rows.h"
#include "vexo.h"

using vexo_internal::kRows;
using vexo_internal::NumberLocale;
using vexo_internal::rows_of;

namespace {

const size_t kBuffer = 1024; // bytes of a line buffer, terminator included

struct CloseFile {
  void operator()(FILE *f) const { fclose(f); }
};
struct FreeParser {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
struct Free {
  void operator()(void *p) const { free(p); }
};

// What the handlers of one load share.
struct vexo_xml_data {
  vexo_lcnr *lcnr;    // the record being filled
  int el_level;       // LEVEL elements open at this point of the document
  bool out_of_memory; // a piece of text could not be copied
};

bool is_level(const char *el) { return strcmp(el, "LEVEL") == 0; }

void start_handler(void *data, const char *el, const char ** /*attr*/) {
  if (is_level(el)) {
    static_cast<vexo_xml_data *>(data)->el_level++;
  }
}

void end_handler(void *data, const char *el) {
  if (is_level(el)) {
    static_cast<vexo_xml_data *>(data)->el_level--;
  }
}

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

// The usual form of a row: ten decimal numbers with commas between them. limit is behind the end mark.
bool read_row(const char *text, const char *limit, float (&values)[10]) {
  for (int n = 0; n < 10; n++) {
    if (n > 0 && *text++ != ',') {
      return false;
    }
    text = vexo_internal::read_number(text, limit, &values[n]);
    if (text == nullptr) {
      return false;
    }
  }
  return true;
}

void scan_row(const char *text, size_t length, vexo_lcnr *lcnr, int i) {
  const Row row = row_fields(lcnr, i);
  float *const(&f)[10] = row.field;
  float values[10];
  if (!read_row(text, text + length + 1, values)) {
    sscanf(text, " %f,%f,%f,%f,%f,%f,%f,%f,%f,%f", f[0], f[1], f[2], f[3], f[4], f[5], f[6], f[7], f[8], f[9]);
    return;
  }
  for (int n = 0; n < 10; n++) {
    *f[n] = values[n];
  }
}

// Formats row i; numbers is a printf format of ten doubles. Text beyond the buffer is cut.
void format_row(char (&text)[kBuffer], const char *numbers, vexo_lcnr *lcnr, int i) {
  double d[10];
  const Row row = row_fields(lcnr, i);
  for (int n = 0; n < 10; n++) {
    d[n] = static_cast<double>(*row.field[n]);
  }
  snprintf(text, sizeof text, numbers, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7], d[8], d[9]);
}

// Every piece of text inside a LEVEL is a row. The piece is not terminated, so the scan works on a copy; only text of
// an entity can be longer than a line buffer.
void data_handler(void *data, const XML_Char *s, int len) {
  auto *state = static_cast<vexo_xml_data *>(data);
  vexo_lcnr *lcnr = state->lcnr;
  if (state->el_level <= 0 || lcnr->num >= kRows) {
    return;
  }
  const auto length = static_cast<size_t>(len);
  char line[kBuffer];
  std::unique_ptr<char, Free> longer(length < sizeof line ? nullptr : static_cast<char *>(malloc(length + 1)));
  char *text = length < sizeof line ? line : longer.get();
  if (text == nullptr) {
    state->out_of_memory = true;
    return;
  }
  memcpy(text, s, length);
  text[length] = '\0';
  scan_row(text, length, lcnr, lcnr->num);
  lcnr->num++;
}

int load(XML_Parser parser, FILE *f, const vexo_xml_data *state) {
  vexo_internal::StreamPieces<kBuffer> pieces(f); // the stream is ours
  for (;;) {
    size_t length = 0;
    const char *piece = pieces.next(&length);
    const bool done = pieces.met_end();
    if (done && ferror(f) != 0) {
      fputs("Read error\n", stderr);
      return -1;
    }
    if (XML_Parse(parser, piece, static_cast<int>(length), done ? 1 : 0) != XML_STATUS_OK) {
      fprintf(stderr, "Parse error at line %d:\n%s\n", static_cast<int>(XML_GetCurrentLineNumber(parser)),
              XML_ErrorString(XML_GetErrorCode(parser)));
      return -1;
    }
    if (state->out_of_memory) {
      fputs("out of memory\n", stderr);
      return -1;
    }
    if (done) {
      return 0;
    }
  }
}

} // namespace

int vexo_load_lcnr_xml(vexo_lcnr *lcnr, const char *path) {
  const NumberLocale locale;
  const std::unique_ptr<FILE, CloseFile> f(fopen(path, "r"));
  if (f == nullptr) {
    fprintf(stderr, "Failed to open %s\n", path);
    return -1;
  }
  const std::unique_ptr<XML_ParserStruct, FreeParser> parser(XML_ParserCreate(nullptr));
  if (parser == nullptr) {
    fputs("Couldn't allocate memory for parser\n", stderr);
    return -1;
  }
  const std::unique_ptr<vexo_xml_data, Free> state(static_cast<vexo_xml_data *>(malloc(sizeof(vexo_xml_data))));
  if (state == nullptr) {
    fputs("out of memory\n", stderr);
    return -1;
  }
  *state = vexo_xml_data{lcnr, 0, false};
  lcnr->num = 0;
  XML_SetUserData(parser.get(), state.get());
  XML_SetElementHandler(parser.get(), start_handler, end_handler);
  XML_SetCharacterDataHandler(parser.get(), data_handler);
  return load(parser.get(), f.get(), state.get());
}

int vexo_store_lcnr_xml(vexo_lcnr *lcnr, const char *path) {
  const std::unique_ptr<FILE, CloseFile> f(fopen(path, "w"));
  if (f == nullptr) {
    return -1;
  }
  const NumberLocale locale;
  fputs("<LCNR>\n", f.get());
  for (int i = 0; i < rows_of(lcnr); i++) {
    char line[kBuffer];
    format_row(line, "<LEVEL>%f,%f,%f,%f,%f,%f,%f,%f,%f,%f</LEVEL>\n", lcnr, i);
    fputs(line, f.get());
  }
  fputs("</LCNR>", f.get());
  return 0;
}

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
