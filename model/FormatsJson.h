#pragma once
// The stored formats (the formats file) as JSON with every field named, and back.
//
//   {"version": 890108,
//    "header": {"logoOn": 0, "designer": "...", ...},
//    "formats": [{"name": "...", "analysisType": 0, "outputType": 1, ...,
//                 "sections": [{"kind": 0, "title": "...", "included": 1, ...}, ...]}, ...]}
//
// A section carries the fields of its kind (kind 2 its model options, kind 13 its beam
// choices, kind 17 its outside file, ...).
#include <stdexcept>
#include <string>

#include <nlohmann/json.hpp>

class CZPNewReportOptions;

// A field that cannot be taken: what() names it ("formats[2].sections[4].title: ...").
class FormatsJsonError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

nlohmann::ordered_json FormatsToJson(const CZPNewReportOptions& options);

// Replaces the formats and the header of `options` by those of `json`. Everything is read and
// checked first: on FormatsJsonError `options` is as it was.
void FormatsFromJson(CZPNewReportOptions& options, const nlohmann::json& json);
