// A page title of the output: one or two lines (title, subtitle). Its label reads "Page Title".
#pragma once

#include <string>
#include <vector>

#include "platform/outputmodel/OmOutputPart.h"

class OmPageTitle : public OmOutputPart {
public:
  explicit OmPageTitle(std::string codePage);

  void Accept(Visitor& visitor) override { visitor.Visit(*this); }
  const char* KindName() const override { return "Page Title"; }

  const std::string& CodePage() const { return _codePage; }
  const std::vector<std::string>& Lines() const { return _lines; }
  void AddLine(std::string line) { _lines.push_back(std::move(line)); }

private:
  std::string _codePage;
  std::vector<std::string> _lines;
};
