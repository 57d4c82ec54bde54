// Stateless helpers that the imputation and bootstrap poolers and all their patterns share to find
// their way around a pivot table: the imputation and bootstrap split dimensions, categories by
// label or label path, the "Pooled" category, footnotes on cells, and the Fisher z transform.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "backend/tables/PuppetVector.h"
#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmPivotTable.h"

class OmCellText;
class OmNumber;

class OmPoolingTools {
public:
  // The most negative double: a number that is missing or could not be computed.
  static constexpr double kSysMiss = -1.7976931348623157e308;
  // The variable that labels the imputation dimension; its category 0 is the original data.
  static constexpr const char* kImputationVariable = "Imputation_";
  // The variable that labels the bootstrap split dimension; its category 0 is the original sample.
  static constexpr const char* kBootstrapSplitVariable = "$bootstrap_split";
  // The label of the category that holds pooled results.
  static constexpr const char* kPooledLabel = "Pooled";
  // Number format of the system-missing cell that carries an error footnote.
  static constexpr std::uint32_t kErrorCellFormat = 0x50005;

  OmPoolingTools() = delete;

  // --- Dimensions. Every search gives -1 when nothing matches.

  // The first dimension labelled with a variable named "Imputation_" in any case.
  static int FindImputationDim(const OmPivotTable& table);
  // The first dimension labelled with the variable "$bootstrap_split" (empty label).
  static int FindBootstrapDim(const OmPivotTable& table);
  // The first dimension whose label equals label (same cell type, equal content).
  static int FindDim(const OmPivotTable& table, const OmCellText& label);

  // --- Categories. A node with children is a group, a node without is a category; a category
  // number is the category's leaf index (its cell coordinate).

  // The category of the original data: the numeric value 0 of the dimension's variable.
  static int FindOriginalDataImputation(const OmPivotTable& table, int imputationDim);
  // Depth first below node: the first category whose label equals label (groups' own labels are
  // not compared).
  static int FindMatchingCategory(const OmCellText& label, OmDimension::ConstNode node);
  // Depth first below node, by the label texts of a path such as {"N", "Valid"}: groups whose
  // label is not on the path are looked through; the last part must name a category.
  static int FindMatchingCategory(const std::vector<std::string>& path,
                                  OmDimension::ConstNode node);
  // The same with a "#"-separated label path ("N#Valid").
  static int FindMatchingCategory(const std::string& path, OmDimension::ConstNode node);
  // The first node whose label equals *label among first and its later siblings up to (not
  // including) end, each node before its descendants; end is a later sibling of first, or null for
  // "through the last sibling". Gives end when none matches (also for a null first or label).
  static OmDimension::ConstNode Find(OmDimension::ConstNode first, OmDimension::ConstNode end,
                                     const OmCellText* label);
  static OmDimension::Node Find(OmDimension::Node first, OmDimension::Node end,
                                const OmCellText* label);
  // Finds, depth first, the node labelled labelText (a composite label compares by its pattern)
  // that groups a confidence interval's two bounds: a receives the second child's category, b the
  // first's. level starts at 0.95 and takes the composite's one number argument (95 reads as
  // 0.95). False when there is no such node or it does not have exactly two children.
  static bool FindCI(const OmDimension& dimension, const std::string& labelText, int& a, int& b,
                     double& level);
  // Appends the pieces of text between "#" separators: "a#b" gives a and b, "#a" gives "" and a,
  // "a##b" gives a, "" and b, "a#" gives a, "" gives nothing.
  static void SplitString(const std::string& text, std::vector<std::string>& pieces);
  // The text a label path part is compared with: a composite's pattern (with its "^1"
  // placeholders), any other cell's own text.
  static std::string LabelText(const OmCellText& cell);

  // --- Adding categories.

  // The "Pooled" category directly under the dimension's root, added as the dimension's next
  // category when there is none.
  static int MakePooledCategory(OmPivotTable& table, int dim);
  // The category labelled labelText anywhere in the dimension, added under the root when absent.
  static int AddCategory(OmDimension& dimension, const std::string& labelText);
  static int AddCategory(OmPivotTable& table, int dim, const std::string& labelText);

  // --- Cells.

  // The number at coords for reading, or null when the cell there is none or not a number: the
  // stored object, or scratch holding a plain number that the table keeps without one (valid
  // until scratch is used again). Readers use it instead of Cell(), which would make and keep an
  // object for every number it is asked for.
  static const OmNumber* ReadNumber(const OmPivotTable& table, const OmPivotTable::Coordinates& coords,
                                    OmNumber& scratch);

  // --- Footnotes.

  // Adds a footnote with a copy of text to the table (an equal one is reused), refers target to
  // it, and returns its index.
  static int FootnoteCell(const OmCellText& text, OmPivotTable& table, OmCellText& target);
  // The same with a translatable string cell of text.
  static int FootnoteCell(const std::string& text, OmPivotTable& table, OmCellText& target);
  // The index of the table's footnote made from text (no marker), or -1.
  static int FindFootnote(const OmPivotTable& table, const OmCellText& text);
  // Refers the cell at coords to footnote index; an empty address first receives a
  // system-missing number cell to carry it.
  static void ErrorFootnote(OmPivotTable& table, const OmPivotTable::Coordinates& coords,
                            int footnoteIndex);
  // Puts the text of a failed pooling computation's error code on the cell at coords.
  // The footnote text of a pooling error code: its own translatable text, or for an unknown
  // code the pattern "Pooling failed with error code ^1." with the code (no decimals).
  static std::unique_ptr<OmCellText> PoolingErrorText(long errorCode);
  static void CompErrorFootnote(OmPivotTable& table, const OmPivotTable::Coordinates& coords,
                                long errorCode);

  // --- Bootstrap helpers.

  // The split number that a cell names, or -1: a string holding "$bootstrap_split" followed by
  // blanks or "=" and one digit; a composite's first such argument (depth first); a numeric data
  // value of the variable "$bootstrap_split" holding a whole number. Null gives -1.
  static int BootstrapSplitNum(const OmCellText* cell);
  // Moves the first entry equal to dim to the front of order, keeping the others' order.
  static void DemoteDimension(PuppetVector<short> order, short dim);
  // Moves every entry of source other than dim to the front of target, one pass over the
  // positions of source (an entry that moves up into a freed position is passed over).
  static void IsolateDimension(short dim, PuppetVector<short> source, PuppetVector<short> target);

  // --- Statistics.

  // The arithmetic mean; system-missing for no values.
  static double Mean(const std::vector<double>& values);
  // Replaces each r by 0.5 ln((1 + r) / (1 - r)) in order; the first value not strictly between
  // -1 and 1 is transformed all the same (an infinity or NaN), the rest are left alone, and the
  // result is false.
  static bool FisherZ(std::vector<double>& values);
  // Replaces each z by (e^2z - 1) / (e^2z + 1).
  static void InverseFisherZ(std::vector<double>& values);
};
