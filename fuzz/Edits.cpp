#include "Edits.h"

#include <cstring>

#include "MemoryFiles.h"

namespace tavi_fuzz {
namespace {

// Puts a text of the input's into one of a record's text fields, which stand at any address; `held` keeps it alive.
template <class Record, size_t kCount>
void ChangeText(Record& record, const size_t (&places)[kCount], Choices& choose, std::string& held) {
  held = choose.Text();
  const char* const text = held.data();
  std::memcpy(reinterpret_cast<uint8_t*>(&record) + places[choose.Number(kCount)], &text, sizeof text);
}

template <class Record>
using Getter = int32_t (*)(NitfHandle, uint32_t, Record*);

// Gets a record, changes what `change` says, sets it, and gives the record's own texts back before it is freed.
template <class Record, class Change>
void Rewrite(NitfHandle handle, uint32_t index, Getter<Record> get, Getter<Record> set,
             int32_t (*free_record)(Record*), Change change) {
  Record record = {};
  if (get(handle, index, &record) == SUCCESS) {
    Record changed = record;
    change(changed);
    set(handle, index, &changed);
  }
  free_record(&record);
}

void EditHeader(NitfHandle handle, Choices& choose) {
  std::string text;
  Rewrite<NitfHeaderInfo>(
      handle, 0, [](NitfHandle h, uint32_t, NitfHeaderInfo* r) { return Tavi_NITFGetNITFHeader(h, r); },
      [](NitfHandle h, uint32_t, NitfHeaderInfo* r) { return Tavi_NITFSetNITFHeader(h, r); },
      Tavi_NITFFreeNITFHeader,
      [&](NitfHeaderInfo& r) {
        constexpr size_t kTexts[] = {offsetof(NitfHeaderInfo, FTITLE), offsetof(NitfHeaderInfo, OSTAID),
                                     offsetof(NitfHeaderInfo, FSCLAS), offsetof(NitfHeaderInfo, FSCLTX),
                                     offsetof(NitfHeaderInfo, ONAME),  offsetof(NitfHeaderInfo, FHDR)};
        ChangeText(r, kTexts, choose, text);
        r.HL = choose.Byte();
        r.FL = choose.Byte() * 1000U;
        std::memset(r.FDT, '0' + choose.Byte() % 10, sizeof r.FDT);
        r.FVER = static_cast<float>(choose.Byte());
      });
}

void EditImage(NitfHandle handle, Choices& choose) {
  std::string text;
  Rewrite<NitfImageHeaderInfo>(
      handle, choose.Number(3), Tavi_NITFGetImageHeader, Tavi_NITFSetImageHeader, Tavi_NITFFreeImageHeader,
      [&](NitfImageHeaderInfo& r) {
        constexpr size_t kTexts[] = {
            offsetof(NitfImageHeaderInfo, IID1),   offsetof(NitfImageHeaderInfo, IC),
            offsetof(NitfImageHeaderInfo, COMRAT), offsetof(NitfImageHeaderInfo, ICORDS),
            offsetof(NitfImageHeaderInfo, IMAG),   offsetof(NitfImageHeaderInfo, PJUST),
            offsetof(NitfImageHeaderInfo, IREP),   offsetof(NitfImageHeaderInfo, IMODE),
            offsetof(NitfImageHeaderInfo, PVTYPE)};
        ChangeText(r, kTexts, choose, text);
        r.NBPP = choose.Byte();
        r.NBPC = choose.Byte();
        r.ILOC_ROW = choose.Byte() - 128;
        r.ILOC_COLUMN = choose.Byte() * 1000;
      });
}

void EditGraphic(NitfHandle handle, Choices& choose) {
  std::string text;
  Rewrite<NitfGraphicHeaderInfo>(
      handle, choose.Number(3), Tavi_NITFGetGraphicHeader, Tavi_NITFSetGraphicHeader,
      Tavi_NITFFreeGraphicHeader, [&](NitfGraphicHeaderInfo& r) {
        constexpr size_t kTexts[] = {
            offsetof(NitfGraphicHeaderInfo, SNAME), offsetof(NitfGraphicHeaderInfo, SFMT),
            offsetof(NitfGraphicHeaderInfo, SCOLOR), offsetof(NitfGraphicHeaderInfo, SID)};
        ChangeText(r, kTexts, choose, text);
        r.SDLVL = choose.Byte();
        r.SALVL = choose.Byte();
        r.SBND2_SECOND = choose.Byte();
      });
}

void EditText(NitfHandle handle, Choices& choose) {
  std::string text;
  Rewrite<NitfTextHeaderInfo>(handle, choose.Number(3), Tavi_NITFGetTextHeader, Tavi_NITFSetTextHeader,
                              Tavi_NITFFreeTextHeader, [&](NitfTextHeaderInfo& r) {
                                constexpr size_t kTexts[] = {offsetof(NitfTextHeaderInfo, TXTITL),
                                                             offsetof(NitfTextHeaderInfo, TXTFMT),
                                                             offsetof(NitfTextHeaderInfo, TEXTID)};
                                ChangeText(r, kTexts, choose, text);
                                r.TXTALVL = choose.Byte();
                              });
}

void AppendImage(NitfHandle handle, Choices& choose) {
  HostBitmap bitmap = {};
  const uint32_t bits = choose.Number(2) == 0 ? 8 : 24;
  HostCreateBitmap(&bitmap, sizeof bitmap, 1, 1 + choose.Number(40), 1 + choose.Number(40), bits, 1, nullptr,
                   1, nullptr, 0);
  Tavi_NITFAppendImageSegment(handle, &bitmap, choose.Number(2) == 0 ? 10 : 182, static_cast<int32_t>(bits),
                              choose.Byte());
  HostFreeBitmap(&bitmap);
}

void AppendGraphic(NitfHandle handle, Choices& choose) {
  HostVector vector = {};
  HostVecInit(&vector);
  ObjectLayerRecord layer = {};
  layer.size = sizeof layer;
  HostVectorLayer added = {};
  HostVecAddLayer(&vector, &layer, &added, 4);
  VectorObjectRecord object;
  HostVecInitObject(&object);
  object.line.size = sizeof object.line;
  object.line.kind = VECTOR_LINE;
  object.line.first.x = choose.Byte();
  object.line.second.y = -static_cast<double>(choose.Byte()) * 100;
  HostVecAddObject(&vector, 0, VECTOR_LINE, &object, 0);
  const HostRect place = {0, 0, choose.Byte(), choose.Byte()};
  if (choose.Number(2) == 0) {
    Tavi_NITFAppendGraphicSegment(handle, &vector, &place);
  } else {
    Tavi_NITFSetVectorHandle(handle, choose.Number(3), &vector);
    Tavi_NITFGetVectorHandle(handle, choose.Number(3));
  }
  if (HostVecIsEmpty(&vector) == 0) HostVecFree(&vector);
}

}  // namespace

std::string Choices::Text() {
  std::string text(Number(24), ' ');
  for (char& c : text) c = static_cast<char>(Byte());
  return text;
}

void EditOnce(NitfHandle handle, Choices& choose) {
  switch (choose.Number(7)) {
    case 0:
      return EditHeader(handle, choose);
    case 1:
      return EditImage(handle, choose);
    case 2:
      return EditGraphic(handle, choose);
    case 3:
      return EditText(handle, choose);
    case 4:
      return AppendImage(handle, choose);
    case 5:
      return AppendGraphic(handle, choose);
    default:
      Tavi_NITFAppendTextSegment(handle, kInput);
  }
}

}  // namespace tavi_fuzz
