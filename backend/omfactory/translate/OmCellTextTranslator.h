// Translates one cell text into the output language: a translatable string cell is looked up by
// its key in the session's string-table dictionary, a composite has its pattern and every argument
// translated and its text rebuilt. Other kinds of cells are passed over.
#pragma once

#include "platform/outputmodel/OmCellText.h"

class FacSTDictionary;

class OmCellTextTranslator : public OmCellText::Visitor {
public:
  // dictionary is borrowed and must outlive the translator; it must not be null.
  explicit OmCellTextTranslator(FacSTDictionary* dictionary);

  // A translatable cell shows the translation of its key and keeps the look-up's second and
  // further texts; the key itself is kept, so translating again starts from it.
  void Visit(OmStringCell& cell) override;
  // Translates the pattern and every argument (repeat lists and nested composites included),
  // then rebuilds the composite's text from them.
  void Visit(OmComposite& composite) override;

  FacSTDictionary& Dictionary() const { return *_dictionary; }

private:
  FacSTDictionary* _dictionary;
  // Passed to OmComposite::Substitute: whether "^n" without an argument stays in the text.
  bool _keepUnused = false;
};
