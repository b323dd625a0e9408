#include "msg/tables.h"

#include "paragraph/paragraph_reader.h"

namespace vl {
namespace {

const DataFormat kFormats[] = {
    {0, "invalid", "???"},
    {1, "BINARY", "BIN"},
    {2, "ASCII", "TXT"},
    {3, "POSTSCRIPT", "POS"},
    {4, "MH", "MH"},
    {5, "TIFF-NORMAL", "G3N"},
    {6, "TIFF-FINE", "G3F"},
    {7, "TIFF-SUPERFINE", "G3S"},
    {8, "EPSON", "EPN"},
    {9, "HP-100", "HP1"},
    {10, "HP-300", "HP3"},
    {11, "CONTROL", "CTL"},
    {50, "TIFF-UNCOMPRESSED", "TIF"},
    {51, "BMP-UNCOMPRESSED", "BMP"},
    {52, "PCX", "PCX"},
    {53, "TARGA", "TRG"},
    {54, "GIF", "GIF"},
    {55, "WPG", "WPG"},
    {56, "WMF", "WMF"},
    {57, "TIFF-HUFFMAN", "TIF"},
    {58, "TIFF-G3-FAX", "TIF"},
    {59, "TIFF-LZW", "TIF"},
    {60, "TIFF-G4-FAX", "TIF"},
    {61, "DCX", "DCX"},
    {62, "BMP-COMPRESSED", "BMP"},
    {63, "JPEG", "JPG"},
    {64, "EPS", "EPS"},
    {65, "PICT", "PCT"},
    {66, "TIFF-PACK", "TIF"},
    {67, "TIFF-2D", "TIF"},
    {68, "PDF", "PDF"},
};

struct Word {
  const char* word;
  uint16_t value;
};

// In the order they are searched.
const Word kMessageStatuses[] = {
    {"Su", 1}, {"Ad", 1},  {"He", 2},  {"WT", 3},  {"Wa", 4},  {"Pr", 6},  {"Co", 7},  {"Sr", 13},
    {"Ar", 14}, {"Se", 8}, {"Sc", 9},  {"Ab", 10}, {"Re", 11}, {"WD", 12}, {"Fa", 31}, {"OK", 30},
};

const Word kUserStatuses[] = {{"Aw", 2}, {"Wa", 3}, {"OK", 1}};

// The message types, then the device status words: one table.
const Word kTypesAndDeviceStatuses[] = {
    {"Fax", 1}, {"LAN", 2}, {"SMS", 3}, {"Un", 0}, {"OK", 1}, {"Er", 2},  {"Fa", 3},  {"Of", 4},  {"Bu", 0},
    {"WC", 6},  {"Se", 7},  {"Re", 8},  {"PS", 9}, {"PR", 10}, {"WS", 11}, {"Sc", 12}, {"In", 13},
};
const int kMessageTypeRows = 3;

template <size_t N>
const Word* Find(const Word (&table)[N], const char* word, size_t first = 0) {
  for (size_t i = first; i < N; ++i)
    if (para::EqualNoCase(table[i].word, word)) return &table[i];
  return nullptr;
}

}  // namespace

const DataFormat* FormatByCode(uint16_t code) {
  for (const DataFormat& f : kFormats)
    if (f.code == code) return &f;
  return nullptr;
}

const DataFormat* FormatByExtension(const char* extension) {
  for (const DataFormat& f : kFormats)
    if (para::EqualNoCase(f.extension, extension)) return &f;
  return nullptr;
}

const DataFormat* FormatByWord(const char* word) {
  for (const DataFormat& f : kFormats)
    if (para::EqualNoCase(f.word, word)) return &f;
  return nullptr;
}

uint16_t MessageStatusOf(const char* word, bool preview) {
  const Word* found = Find(kMessageStatuses, word);
  uint16_t status = found ? found->value : 0;
  if (preview && (status == 30 || status == 31)) status += 2;
  return status;
}

uint16_t UserStatusOf(const char* word) {
  const Word* found = Find(kUserStatuses, word);
  return found ? found->value : 0;
}

uint16_t MessageTypeOf(const char* word, uint16_t fallback) {
  const Word* found = Find(kTypesAndDeviceStatuses, word);
  return found ? found->value : fallback;
}

uint16_t DeviceStatusOf(const char* word, uint16_t fallback) {
  const Word* found = Find(kTypesAndDeviceStatuses, word, kMessageTypeRows);
  return found ? found->value : fallback;
}

}  // namespace vl
