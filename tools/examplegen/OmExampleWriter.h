// What the example procedures' writers share: a pool of 40 cell ids taken in turn (as procedures
// do: every message takes the cells it names, so the slots are free again when the pool wraps),
// and the text and number cells that most messages name.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>

#include "platform/stream/OmStreamWriter.h"

// Protocol number formats: type F in bits 16-23, width 8 in 8-15, decimals in 0-7.
constexpr std::int32_t OmExampleF(std::int32_t decimals) { return (5 << 16) | (8 << 8) | decimals; }

class OmExampleWriter {
public:
  explicit OmExampleWriter(OmStreamWriter& out) : _out(out) {}

  // Writes a text (literal 1: not translatable) or a number into the next slot; gives its id.
  std::int32_t Text(const std::string& text, std::int32_t literal = 0) {
    _out.String(Next(), text, literal);
    return _id;
  }
  std::int32_t Number(double value, std::int32_t format) {
    _out.Number(Next(), value, format);
    return _id;
  }

  // A composite text: the pattern cell with one argument cell; gives the composite's id.
  std::int32_t Composite(std::int32_t pattern, std::int32_t argument) {
    _out.BeginComposite(Next(), pattern);
    const std::int32_t composite = _id;
    _out.CompositeArgument(argument);
    return composite;
  }

protected:
  std::int32_t Next() {
    _id = _id % 40 + 1;
    return _id;
  }

  OmStreamWriter& _out;
  std::int32_t _id = 0;
};

// The cells the multiple-imputation examples share: their three variables, the imputation
// variable, and a data set's value of it (0 the original data).
class OmImputedDataWriter : public OmExampleWriter {
public:
  using OmExampleWriter::OmExampleWriter;

  std::int32_t Variable(int v) {
    static const char* const kNames[3] = {"income", "age", "educ"};
    static const char* const kLabels[3] = {"Household income (thousands)", "Age in years",
                                           "Years of education"};
    _out.Variable(Next(), 2, kNames[v], kLabels[v]);
    return _id;
  }
  std::int32_t Imputation() {
    _out.Variable(Next(), 2, "Imputation_", "Imputation Number");
    return _id;
  }
  std::int32_t DataSetValue(int i) {
    _out.DataValue(Next(), 2, OmExampleF(0), "Imputation_", i == 0 ? "Original data" : "",
                   double(i));
    return _id;
  }
};

// A fixed pseudo-random sequence, so that the stream is the same on every machine.
class OmExampleDraws {
public:
  double Uniform() {
    _state = _state * 6364136223846793005ULL + 1442695040888963407ULL;
    return (double(_state >> 11) + 0.5) / 9007199254740992.0;
  }
  double Normal() {
    const double pi = 3.14159265358979323846;
    return std::sqrt(-2.0 * std::log(Uniform())) * std::cos(2.0 * pi * Uniform());
  }

private:
  std::uint64_t _state = 20260101;
};

