#include "platform/outputmodel/OmProcedure.h"

OmProcedure::OmProcedure(const OmCellText& label, std::string outputLanguage, std::string codePage,
                         std::string locale)
    : OmHeading(label),
      _command(label.Text()),
      _language(std::move(outputLanguage)),
      _codePage(std::move(codePage)),
      _locale(std::move(locale)) {}
