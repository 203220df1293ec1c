// JSON for other programs (nlohmann-json). Single-precision values are written with the digits that identify them.
#ifndef VEXO_TOOLS_JSON_H
#define VEXO_TOOLS_JSON_H

#include <nlohmann/json.hpp>
#include <string>

#include "vexo-matrix.h"

// Keeps the keys in the order in which they were added.
using Json = nlohmann::ordered_json;

// The double whose shortest text is that of the float; null for a value that is not finite.
Json json_number(float value);

Json json_vector(const vexo_vector &v);
Json json_matrix(const vexo_matrix &m);

// The document of a text. Throws a Failure (input) that names the line where it is no JSON. expected: what it should
// be.
Json parse_json(const std::string &name, const std::string &text, const std::string &expected);

// Prints the document and a line break to standard output.
void print_json(const Json &document);

#endif
