#include "backend/omfactory/pooling/OmPoolingTools.h"

#include <cmath>
#include <cstddef>
#include <memory>

#include "platform/mipool/PoolingErrors.h"
#include "platform/outputmodel/OmCellText.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmVariable.h"
#include "platform/strings/NuvaroMB.h"

namespace {

bool SameLabel(const OmCellText* a, const OmCellText& b) { return a != nullptr && a->Equals(b); }

// A category is a node without children that has a cell coordinate; an empty group has none and
// is neither searched nor matched.
bool IsCategory(OmDimension::ConstNode node) {
  return node->NChildren() == 0 && node->LeafIndex() >= 0;
}

int MatchPath(const std::vector<std::string>& path, std::size_t part, OmDimension::ConstNode node) {
  for (const auto& child : node->Children()) {
    const bool group = child->NChildren() > 0;
    const OmCellText* label = child->Label();
    const bool equal = label != nullptr && OmPoolingTools::LabelText(*label) == path[part];
    int found = -1;
    if (equal && part + 1 == path.size()) {
      if (IsCategory(child.get())) found = child->LeafIndex();
    } else if (equal) {
      if (group) found = MatchPath(path, part + 1, child.get());
    } else if (group) {
      found = MatchPath(path, part, child.get());
    }
    if (found >= 0) return found;
  }
  return -1;
}

OmDimension::ConstNode FindDepthFirst(OmDimension::ConstNode node, const OmCellText& label) {
  if (SameLabel(node->Label(), label)) return node;
  for (const auto& child : node->Children()) {
    if (OmDimension::ConstNode hit = FindDepthFirst(child.get(), label)) return hit;
  }
  return nullptr;
}

OmDimension::ConstNode FindByText(OmDimension::ConstNode node, const std::string& text) {
  if (node->Label() && OmPoolingTools::LabelText(*node->Label()) == text) return node;
  for (const auto& child : node->Children()) {
    if (OmDimension::ConstNode hit = FindByText(child.get(), text)) return hit;
  }
  return nullptr;
}

int SplitInString(const std::string& text) {
  const std::string marker = OmPoolingTools::kBootstrapSplitVariable;
  const std::size_t at = text.find(marker);
  if (at == std::string::npos) return -1;
  std::size_t i = at + marker.size();
  while (i < text.size() && (text[i] == ' ' || text[i] == '=')) ++i;
  if (i < text.size() && text[i] >= '0' && text[i] <= '9') return text[i] - '0';
  return -1;
}

int SplitInParts(const OmComposite::Part& part) {
  for (const auto& p : part.Parts()) {
    const int found = p->IsRepeatList() ? SplitInParts(*p) : OmPoolingTools::BootstrapSplitNum(p->Cell());
    if (found >= 0) return found;
  }
  return -1;
}

}  // namespace

const OmNumber* OmPoolingTools::ReadNumber(const OmPivotTable& table,
                                           const OmPivotTable::Coordinates& coords,
                                           OmNumber& scratch) {
  const OmCellText* cell = table.ReadCell(coords, scratch);
  return cell == &scratch ? &scratch : dynamic_cast<const OmNumber*>(cell);
}

int OmPoolingTools::FindImputationDim(const OmPivotTable& table) {
  for (int d = 0; d < table.NDimensions(); ++d) {
    const auto* variable = dynamic_cast<const OmVariable*>(table.Dimension(d).Label());
    if (variable && NuvaroMBstricmp_A(variable->Name(), kImputationVariable) == 0) return d;
  }
  return -1;
}

int OmPoolingTools::FindBootstrapDim(const OmPivotTable& table) {
  return FindDim(table, OmVariable(kBootstrapSplitVariable, ""));
}

int OmPoolingTools::FindDim(const OmPivotTable& table, const OmCellText& label) {
  for (int d = 0; d < table.NDimensions(); ++d) {
    if (SameLabel(table.Dimension(d).Label(), label)) return d;
  }
  return -1;
}

int OmPoolingTools::FindOriginalDataImputation(const OmPivotTable& table, int imputationDim) {
  if (imputationDim < 0 || imputationDim >= table.NDimensions()) return -1;
  const OmDimension& dimension = table.Dimension(imputationDim);
  const auto* variable = dynamic_cast<const OmVariable*>(dimension.Label());
  const OmNumDataValue original(variable ? variable->Name() : std::string(kImputationVariable), "",
                                0.0, OmNumber::kDefaultFormat);
  return FindMatchingCategory(original, &dimension.Root());
}

int OmPoolingTools::FindMatchingCategory(const OmCellText& label, OmDimension::ConstNode node) {
  if (!node) return -1;
  for (const auto& child : node->Children()) {
    int found = -1;
    if (child->NChildren() > 0) {
      found = FindMatchingCategory(label, child.get());
    } else if (IsCategory(child.get()) && SameLabel(child->Label(), label)) {
      found = child->LeafIndex();
    }
    if (found >= 0) return found;
  }
  return -1;
}

int OmPoolingTools::FindMatchingCategory(const std::vector<std::string>& path,
                                         OmDimension::ConstNode node) {
  if (!node || path.empty()) return -1;
  return MatchPath(path, 0, node);
}

int OmPoolingTools::FindMatchingCategory(const std::string& path, OmDimension::ConstNode node) {
  std::vector<std::string> parts;
  SplitString(path, parts);
  return FindMatchingCategory(parts, node);
}

OmDimension::ConstNode OmPoolingTools::Find(OmDimension::ConstNode first,
                                            OmDimension::ConstNode end, const OmCellText* label) {
  if (!first || !label) return end;
  const OmDimensionNode* parent = first->Parent();
  if (!parent) {
    // A root has no siblings: the range is the root alone.
    OmDimension::ConstNode hit = first == end ? nullptr : FindDepthFirst(first, *label);
    return hit ? hit : end;
  }
  for (std::size_t i = std::size_t(first->IndexInParent()); i < parent->NChildren(); ++i) {
    OmDimension::ConstNode sibling = parent->Child(i);
    if (sibling == end) break;
    if (OmDimension::ConstNode hit = FindDepthFirst(sibling, *label)) return hit;
  }
  return end;
}

OmDimension::Node OmPoolingTools::Find(OmDimension::Node first, OmDimension::Node end,
                                       const OmCellText* label) {
  // The nodes found are first's own siblings or their descendants, as mutable as first is.
  return const_cast<OmDimension::Node>(
      Find(static_cast<OmDimension::ConstNode>(first), static_cast<OmDimension::ConstNode>(end), label));
}

bool OmPoolingTools::FindCI(const OmDimension& dimension, const std::string& labelText, int& a,
                            int& b, double& level) {
  a = -1;
  b = -1;
  level = 0.95;
  OmDimension::ConstNode node = nullptr;
  for (const auto& child : dimension.Root().Children()) {
    if ((node = FindByText(child.get(), labelText)) != nullptr) break;
  }
  if (!node) return false;
  if (const auto* composite = dynamic_cast<const OmComposite*>(node->Label())) {
    if (composite->NArguments() == 1) {
      if (const auto* number = dynamic_cast<const OmNumber*>(composite->Argument(0))) {
        level = number->Value() >= 1.0 ? number->Value() / 100.0 : number->Value();
      }
    }
  }
  if (node->NChildren() != 2) return false;
  a = node->Child(1)->LeafIndex();
  b = node->Child(0)->LeafIndex();
  return true;
}

void OmPoolingTools::SplitString(const std::string& text, std::vector<std::string>& pieces) {
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t hash = text.find('#', start);
    if (hash == std::string::npos) {
      pieces.push_back(text.substr(start));
      return;
    }
    pieces.push_back(text.substr(start, hash - start));
    start = hash + 1;
  }
}

std::string OmPoolingTools::LabelText(const OmCellText& cell) {
  if (const auto* composite = dynamic_cast<const OmComposite*>(&cell)) return composite->Pattern().Text();
  return cell.Text();
}

int OmPoolingTools::MakePooledCategory(OmPivotTable& table, int dim) {
  OmDimension& dimension = table.Dimension(dim);
  const OmStringCell pooled(kPooledLabel, true);
  const int at = dimension.FindChild(&dimension.Root(), pooled, false);
  if (at >= 0) return dimension.Root().Child(std::size_t(at))->LeafIndex();
  return dimension.Child(&dimension.Root(), dimension.Size(), pooled, false)->LeafIndex();
}

int OmPoolingTools::AddCategory(OmDimension& dimension, const std::string& labelText) {
  const OmStringCell label(labelText, true);
  const int found = FindMatchingCategory(label, &dimension.Root());
  if (found >= 0) return found;
  return dimension.Child(&dimension.Root(), dimension.Size(), label, false)->LeafIndex();
}

int OmPoolingTools::AddCategory(OmPivotTable& table, int dim, const std::string& labelText) {
  return AddCategory(table.Dimension(dim), labelText);
}

int OmPoolingTools::FootnoteCell(const OmCellText& text, OmPivotTable& table, OmCellText& target) {
  const int index = table.Footnote(OmFootnote(text), false);
  table.FootnoteAt(index).AddReference();
  target.Footnote(std::int16_t(index));
  return index;
}

int OmPoolingTools::FootnoteCell(const std::string& text, OmPivotTable& table, OmCellText& target) {
  return FootnoteCell(OmStringCell(text, true), table, target);
}

int OmPoolingTools::FindFootnote(const OmPivotTable& table, const OmCellText& text) {
  const OmFootnote wanted(text);
  const auto& notes = table.Footnotes();
  for (std::size_t i = 0; i < notes.size(); ++i) {
    if (notes[i] == wanted) return int(i);
  }
  return -1;
}

void OmPoolingTools::ErrorFootnote(OmPivotTable& table, const OmPivotTable::Coordinates& coords,
                                   int footnoteIndex) {
  OmCellText* cell = table.Cell(coords);
  if (!cell) {
    table.Cell(coords, std::make_unique<OmNumber>(kSysMiss, kErrorCellFormat));
    cell = table.Cell(coords);
    if (!cell) return;  // refused: the table is over its cell limit
  }
  cell->Footnote(std::int16_t(footnoteIndex));
  table.FootnoteAt(footnoteIndex).AddReference();
}

std::unique_ptr<OmCellText> OmPoolingTools::PoolingErrorText(long errorCode) {
  if (IsKnownPoolingError(errorCode)) {
    return std::make_unique<OmStringCell>(GetPoolingErrorString(errorCode), true);
  }
  // The code is an argument, so that one translation serves every code.
  auto text = std::make_unique<OmComposite>(OmStringCell(kUnknownPoolingErrorPattern, true));
  text->Add(OmNumber(double(errorCode), OmNumber::kDefaultFormat));
  text->Substitute();
  return text;
}

void OmPoolingTools::CompErrorFootnote(OmPivotTable& table, const OmPivotTable::Coordinates& coords,
                                       long errorCode) {
  ErrorFootnote(table, coords, table.Footnote(OmFootnote(*PoolingErrorText(errorCode)), false));
}

int OmPoolingTools::BootstrapSplitNum(const OmCellText* cell) {
  if (!cell) return -1;
  if (const auto* string = dynamic_cast<const OmStringCell*>(cell)) return SplitInString(string->Text());
  if (const auto* composite = dynamic_cast<const OmComposite*>(cell)) return SplitInParts(composite->Root());
  if (const auto* value = dynamic_cast<const OmNumDataValue*>(cell)) {
    if (value->VariableName() != kBootstrapSplitVariable) return -1;
    const double v = value->Value();
    if (!std::isfinite(v) || v != std::floor(v) || std::fabs(v) > 2147483647.0) return -1;
    return int(v);
  }
  return -1;
}

void OmPoolingTools::DemoteDimension(PuppetVector<short> order, short dim) {
  const int at = order.Find(dim);
  if (at <= 0) return;
  order.Erase(std::size_t(at));
  order.Insert(0, dim);
}

void OmPoolingTools::IsolateDimension(short dim, PuppetVector<short> source,
                                      PuppetVector<short> target) {
  for (std::size_t i = 0; i < source.size(); ++i) {
    const short entry = source[i];
    if (entry == dim) continue;
    source.Erase(i);
    target.Insert(0, entry);
  }
}

double OmPoolingTools::Mean(const std::vector<double>& values) {
  if (values.empty()) return kSysMiss;
  double sum = 0.0;
  for (double v : values) sum += v;
  return sum / double(values.size());
}

bool OmPoolingTools::FisherZ(std::vector<double>& values) {
  for (double& r : values) {
    const bool inside = r > -1.0 && r < 1.0;
    r = 0.5 * std::log((1.0 + r) / (1.0 - r));
    if (!inside) return false;
  }
  return true;
}

void OmPoolingTools::InverseFisherZ(std::vector<double>& values) {
  // tanh is (e^2z - 1) / (e^2z + 1) without the overflow of e^2z for large z.
  for (double& z : values) z = std::tanh(z);
}
