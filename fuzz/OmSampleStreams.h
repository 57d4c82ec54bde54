// Well-formed message streams that between them use every message code the session implements: the seeds of the fuzz
// corpora, and the material that the robustness tests cut short, lie about and repeat. Each
// procedure writer emits one whole procedure that a session appends without any failure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/stream/OmStreamWriter.h"

class OmSampleStreams {
public:
  using ByteOrder = OmStreamWriter::ByteOrder;

  struct Named {
    std::string name;
    OmStreamWriter stream;
  };

  // Every sample in one byte order. Each starts with the byte-order probe, so a session that
  // starts out not swapping reads it correctly.
  static std::vector<Named> All(ByteOrder order);

  // The byte order restated, display, language and conversion settings, log lines, a flush, a refresh and a page title:
  // the messages that act without a procedure.
  static void SessionSettings(OmStreamWriter& w);
  // Procedure "Descriptives": a heading, a table of 2 x 2 numbers with a footnote, a marker, a
  // corner text and placed dimensions, then a text block of printed lines.
  static void Descriptives(OmStreamWriter& w, std::int64_t id);
  // Procedure "Check": a heading holding a table of one cell with a footnote, then a text block of
  // one line: the least whole procedure with each kind of part that a session keeps, for the
  // checks that every fuzz execution runs.
  static void Small(OmStreamWriter& w, std::int64_t id);
  // Procedure "Frequencies": groups, composites with repeat lists, variables and data values,
  // copies and discards, sorting marks, styles, table properties and a split category.
  static void Frequencies(OmStreamWriter& w, std::int64_t id);
  // Procedure "Graph": a chart, a tree, a two-part model, an interactive object, an outline text
  // and a scratch table.
  static void RichObjects(OmStreamWriter& w, std::int64_t id);
  // Procedure "Text": a table whose labels and cells come as a chunked IPC_STRING of
  // chunkedBytes bytes (more than one message holds when above 32766), long strings in pieces
  // and long texts.
  static void LongTexts(OmStreamWriter& w, std::int64_t id, std::size_t chunkedBytes);
  // Procedure "Bootstrap": a bootstrapped procedure whose end message carries its bootstrap
  // specifications in three parts.
  static void Bootstrapped(OmStreamWriter& w, std::int64_t id);

  // The settings text of a procedure named name.
  static std::string Settings(const std::string& name, const std::string& extra = "");
};
