#include "backend/omfactory/OmMessageCodes.h"

namespace {

struct NamedCode {
  short code;
  const char* name;
};

constexpr NamedCode kNames[] = {
    {IPC_CONVERSION_NAME,    "IPC_CONVERSION_NAME"},
    {IPC_OUTPUT_SETTING,     "IPC_OUTPUT_SETTING"},
    {IPC_CONVERSION_PAIR,    "IPC_CONVERSION_PAIR"},
    {IPC_BYTE_ORDER,         "IPC_BYTE_ORDER"},
    {IPC_NUMBER,             "IPC_NUMBER"},
    {IPC_INTEGER,            "IPC_INTEGER"},
    {IPC_STRING,             "IPC_STRING"},
    {IPC_BEGIN_COMPOSITE,    "IPC_BEGIN_COMPOSITE"},
    {IPC_BEGIN_REPEAT_LIST,  "IPC_BEGIN_REPEAT_LIST"},
    {IPC_END_REPEAT_LIST,    "IPC_END_REPEAT_LIST"},
    {IPC_COMPOSITE_ARGUMENT, "IPC_COMPOSITE_ARGUMENT"},
    {IPC_TABLE_COLORS,       "IPC_TABLE_COLORS"},
    {IPC_REQUIRED_TABLE,     "IPC_REQUIRED_TABLE"},
    {IPC_SCRATCH_TABLE,      "IPC_SCRATCH_TABLE"},
    {IPC_BEGIN_TABLE,        "IPC_BEGIN_TABLE"},
    {IPC_CATEGORY,           "IPC_CATEGORY"},
    {IPC_BEGIN_GROUP,        "IPC_BEGIN_GROUP"},
    {IPC_END_GROUP,          "IPC_END_GROUP"},
    {IPC_CELL_DIMENSION,     "IPC_CELL_DIMENSION"},
    {IPC_CELL,               "IPC_CELL"},
    {IPC_CELL_CATEGORY,      "IPC_CELL_CATEGORY"},
    {IPC_END_TABLE,          "IPC_END_TABLE"},
    {IPC_BEGIN_PROCEDURE,    "IPC_BEGIN_PROCEDURE"},
    {IPC_BEGIN_NODE,         "IPC_BEGIN_NODE"},
    {IPC_END_NODE,           "IPC_END_NODE"},
    {IPC_ANNOTATE,           "IPC_ANNOTATE"},
    {IPC_SPLIT_CATEGORY,     "IPC_SPLIT_CATEGORY"},
    {IPC_DIMENSION,          "IPC_DIMENSION"},
    {IPC_SCRATCH_CATEGORY,   "IPC_SCRATCH_CATEGORY"},
    {IPC_PLACE_DIMENSION,    "IPC_PLACE_DIMENSION"},
    {IPC_ANNOTATE_MARKED,    "IPC_ANNOTATE_MARKED"},
    {IPC_DISCARD_CELL,       "IPC_DISCARD_CELL"},
    {IPC_COPY_CELL,          "IPC_COPY_CELL"},
    {IPC_SORT_GROUP,         "IPC_SORT_GROUP"},
    {IPC_SORT_DIMENSION,     "IPC_SORT_DIMENSION"},
    {IPC_SORT_UNGROUP,       "IPC_SORT_UNGROUP"},
    {IPC_END_PROCEDURE,      "IPC_END_PROCEDURE"},
    {IPC_PRINT_LINE,         "IPC_PRINT_LINE"},
    {IPC_LOG_LINE,           "IPC_LOG_LINE"},
    {IPC_FLUSH_LOG,          "IPC_FLUSH_LOG"},
    {IPC_BEGIN_TEXT_BLOCK,   "IPC_BEGIN_TEXT_BLOCK"},
    {IPC_UNGROUP,            "IPC_UNGROUP"},
    {IPC_CORNER_TEXT,        "IPC_CORNER_TEXT"},
    {IPC_CLEAR_TABLE_FLAG,   "IPC_CLEAR_TABLE_FLAG"},
    {IPC_REFRESH,            "IPC_REFRESH"},
    {IPC_TABLE_PROPERTY,     "IPC_TABLE_PROPERTY"},
    {IPC_SWAP_BYTES,         "IPC_SWAP_BYTES"},
    {IPC_PAGE_TITLE,         "IPC_PAGE_TITLE"},
    {IPC_CHART_XML,          "IPC_CHART_XML"},
    {IPC_VARIABLE,           "IPC_VARIABLE"},
    {IPC_DATA_VALUE,         "IPC_DATA_VALUE"},
    {IPC_COLUMN_WIDTH,       "IPC_COLUMN_WIDTH"},
    {IPC_MODEL_PMML,         "IPC_MODEL_PMML"},
    {IPC_TREE_XML,           "IPC_TREE_XML"},
    {IPC_BOLD,               "IPC_BOLD"},
    {IPC_BACKGROUND_COLOR,   "IPC_BACKGROUND_COLOR"},
    {IPC_TEXT_COLOR,         "IPC_TEXT_COLOR"},
    {IPC_MARKER,             "IPC_MARKER"},
    {IPC_OUTLINE_TEXT,       "IPC_OUTLINE_TEXT"},
    {IPC_INTERACTIVE_JSON,   "IPC_INTERACTIVE_JSON"},
    {IPC_LONG_STRING,        "IPC_LONG_STRING"},
    {IPC_LONG_TEXT,          "IPC_LONG_TEXT"},
    {IPC_HIDE_CATEGORY,      "IPC_HIDE_CATEGORY"},
    {IPC_MISC_PROPERTY,      "IPC_MISC_PROPERTY"},
};

}  // namespace

const char* OmMessageName(short code) {
  for (const NamedCode& entry : kNames) {
    if (entry.code == code) return entry.name;
  }
  return "IPC_UNKNOWN";
}
