// One OMS request as the host hands it to the output factory: the object types it selects, its
// IF and EXCEPTIF subcommands, the column layout and the destination and image options
// that the host's writers read. The factory selector asks it, object by object, whether the object
// is selected; requests travel between processes as a binary record (operator<<, operator>>).
#pragma once

#include <cstdint>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "backend/omsopmgr/OMSColumns.h"
#include "backend/omsopmgr/OMSSelector.h"

class OMSObjectSelector {
public:
  // Image formats of charts, trees and models. The values are the host writers' business; this
  // class only stores them.
  enum ImageType : std::int32_t {
    kImageDefault = 0,
    kImagePng = 1,
    kImageJpeg = 2,
    kImageBmp = 3,
    kImageEmf = 4,
    kImageSvg = 5,
  };

  // The object type bits of the selection, one per kind of output object.
  enum ObjectType : unsigned {
    kCharts = 1,
    kTexts = 2,
    kLogs = 4,
    kWarnings = 8,
    kTables = 16,        // pivot tables other than warnings
    kHeadings = 32,      // headings and procedures
    kPageTitles = 64,
    kTrees = 128,
    kModels = 256,       // models and interactive objects
  };

  OMSObjectSelector();
  OMSObjectSelector(const OMSObjectSelector& other);
  OMSObjectSelector& operator=(const OMSObjectSelector& other);
  ~OMSObjectSelector();

  // Whether notes tables are shown; setting it also marks the option as specified, and then it
  // decides alone for every notes table.
  void ShowNotesTables(bool show);
  bool ShowNotesTables() const;

  void SelectType(unsigned bits);    // adds the bits to the selection
  void UnSelectType(unsigned bits);  // removes them
  unsigned GetSelection() const;
  void SetInfoSelection();  // remembers the current selection
  unsigned GetInfoSelection() const;

  // Copy the subcommand in, unless it is empty: then nothing changes.
  void AddIfOption(const OMSSelector& selector);
  void AddExceptIfOption(const OMSSelector& selector);
  const OMSSelector& GetIfOption() const;
  const OMSSelector& GetExceptIfOption() const;

  void SetColumn(const OMSColumns& column);
  const OMSColumns& GetColumn() const;

  void SetDestinationIsViewer(bool isViewer);  // also marks the viewer as specified
  bool GetDestinationIsViewer() const;
  bool GetViewerSpecified() const;

  void SetNumberedColumnName(const std::string& name, bool isDefault);
  const std::string& GetNumberedColumnName() const;
  bool IsNumberedColumnNameDefault() const;

  // Each setter below also marks its option as specified.
  void SetExportImages(bool exportImages);
  bool GetExportImages() const;
  bool ExportImagesSpecified() const;
  void SetExportImageMaps(bool exportMaps);
  bool GetExportImageMaps() const;
  void SetImageFormat(short format);  // stored sign-extended
  int GetImageFormat() const;
  bool ImageFormatSpecified() const;
  void SetImageRootName(const std::string& name);
  const std::string& GetImageRootName() const;
  bool ImageRootNameSpecified() const;  // the name is not empty
  void SetChartSize(double size, const std::string& text);
  double GetChartSize() const;
  const std::string& GetChartSizeString() const;
  bool ChartSizeSpecified() const;
  void SetTableStyle(const std::string& style);
  const std::string& GetTableStyle() const;
  void SetChartFormat(ImageType format);
  ImageType GetChartFormat() const;
  bool ChartFormatSpecified() const;
  void SetTreeFormat(ImageType format);
  ImageType GetTreeFormat() const;
  bool TreeFormatSpecified() const;
  void SetModelFormat(ImageType format);
  ImageType GetModelFormat() const;
  bool ModelFormatSpecified() const;
  void SetPivotingAllowed(bool allowed);
  bool GetPivitingAllowed() const;
  bool PivotingAllowedSpecified() const;
  void SetJavaScriptFile(const std::string& file);
  const std::string& getJavaScriptFile() const;
  void SetReportTitle(const std::string& title);
  const std::string& getReportTitle() const;
  void addURL(const std::string& label, const std::string& url);
  std::vector<std::string> getURLLabels() const;
  std::vector<std::string> getURLs() const;
  // Precondition: the tag is not empty.
  void SetOMSTag(const std::string& tag);
  const std::string& GetOMSTag() const;
  void SetNoWarning();
  bool GetNoWarning() const;

  // Whether the request selects an object of that type (one of the ObjectType bits), made by
  // that command, with that table subtype and label. Instance numbers are not considered.
  bool IsObjectSelected(short type, const std::string& command, const std::string& subtype,
                        const std::string& label) const;
  // Whether the n-th matching object of a procedure is selected by its number.
  bool IsInstanceSelected(int n) const;
  bool IsLastInstanceSelected() const;  // the IF subcommand names LAST
  bool IsLastInstanceExcluded() const;  // the EXCEPTIF subcommand names LAST

  // The record that is read next came from a machine of the other byte order: passed on to the
  // subcommands and the column layout, whose counts and numbers are then reversed.
  void SwapBytes(bool swap);

  friend std::ostream& operator<<(std::ostream& out, const OMSObjectSelector& selector);
  friend std::istream& operator>>(std::istream& in, OMSObjectSelector& selector);

private:
  void Write(OMSRecordWriter& writer) const;
  void Read(OMSRecordReader& reader);

  struct Data;
  std::unique_ptr<Data> _my;
};
