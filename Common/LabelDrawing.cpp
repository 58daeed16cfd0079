#include "LabelDrawing.h"

#include <algorithm>
#include <string_view>

namespace tavi {

TAVI_UNIT(L"Common/LabelDrawing")

namespace {

constexpr int32_t kLineStep = 20;  // pixels, whatever the font and the label's cells
constexpr int32_t kTransparent = 1;
constexpr int32_t kOpaque = 2;

// Puts the context's text state back at its end.
class SavedContext {
 public:
  explicit SavedContext(HostDrawingContext dc) : dc_(dc), state_(SaveDC(dc)) {}
  SavedContext(const SavedContext&) = delete;
  SavedContext& operator=(const SavedContext&) = delete;
  ~SavedContext() { RestoreDC(dc_, state_); }

 private:
  HostDrawingContext dc_;
  int32_t state_;
};

// The text with a NUL behind it.
int32_t ReadLabelText(NitfFile& document, uint32_t index, HostArray<char>& text) {
  const uint64_t size = LabelDataLength(document, index);
  const int64_t start = LabelDataPosition(document, index);
  if (size != 0 && static_cast<int64_t>(size) > document.SourceSize - start) return ERR_FILE_READ;
  if (!text.Allocate(size + 1, Here())) return ERR_NO_MEMORY;
  if (size == 0) return SUCCESS;
  SeekSource(document, start, kFromStart);
  return ReadSource(document, text.data(), size) == size ? SUCCESS : ERR_FILE_READ;
}

// Returns and line feeds part lines, runs of them only once: blank lines vanish.
void WriteLines(HostDrawingContext dc, std::string_view text, int32_t row, int32_t column) {
  constexpr std::string_view kBreaks = "\r\n";
  for (size_t from = text.find_first_not_of(kBreaks); from != std::string_view::npos;) {
    const size_t to = std::min(text.find_first_of(kBreaks, from), text.size());
    TextOutA(dc, column, row, text.data() + from, static_cast<int32_t>(to - from));
    row = WrapAdd(row, kLineStep);
    from = text.find_first_not_of(kBreaks, to);
  }
}

}  // namespace

int32_t DrawLabelSegment(HostDrawingContext dc, NitfFile& document, uint32_t index, int32_t row_offset,
                         int32_t column_offset) {
  const LbSubHdr* label = SubheaderAt(document.Labels, index, document.LabelCount);
  if (label == nullptr) return ERR_INVALID_PARAMETER;
  HostArray<char> text;
  const int32_t status = ReadLabelText(document, index, text);
  if (status != SUCCESS) return status;
  const SavedContext saved(dc);
  SetTextColor(dc, label->TextColour);
  SetBkColor(dc, label->BackgroundColour);
  // A black background means none.
  SetBkMode(dc, label->BackgroundColour != 0 ? kOpaque : kTransparent);
  WriteLines(dc, std::string_view(text.data()), WrapAdd(row_offset, label->LocationRow),
             WrapAdd(column_offset, label->LocationColumn));
  return SUCCESS;
}

}  // namespace tavi
