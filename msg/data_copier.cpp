#include "msg/data_copier.h"

#include <cstring>
#include <string>
#include <string_view>

#include "api/diagnostics.h"
#include "msg/epson.h"
#include "msg/tables.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"

namespace vl {
namespace {

inline constexpr size_t kBlockSize = 512;

VLRESULT WriteError(const ApiSession& session) {
  ApiReportError(&session, "Error writing to data file");
  return VL_E_FILE_ERROR;
}

// bodyFile is the "%%[FILE]" body's name, or none for the submit file.
VLRESULT ReadError(const ApiSession& session, const char* bodyFile) {
  if (bodyFile) ApiReportError(&session, "Error reading file %s", bodyFile);
  else ApiReportError(&session, "Error reading submit file");
  return VL_E_FILE_ERROR;
}

// The data format of a 1-3 character extension; none, reported, otherwise.
const DataFormat* CheckedFormat(const ApiSession& session, const char* extension) {
  const size_t length = std::strlen(extension);
  if (length < 1 || length > 3) {
    ApiReportError(&session, "Extension name invalid");
    return nullptr;
  }
  const DataFormat* format = FormatByExtension(extension);
  if (!format || format->code == 0) {
    ApiReportError(&session, "Data extension unknown");
    return nullptr;
  }
  return format;
}

VLRESULT CopyBlocks(const ApiSession& session, FILE* in, FILE* out, const char* bodyFile) {
  char block[kBlockSize];
  size_t got;
  while ((got = std::fread(block, 1, sizeof block, in)) > 0)
    if (std::fwrite(block, 1, got, out) != got) return WriteError(session);
  return std::ferror(in) ? ReadError(session, bodyFile) : VL_OK;
}

// Reads one line with its line end, of any length; false at the end.
bool ReadRawLine(FILE* in, std::string* line) {
  line->clear();
  for (int c; (c = std::getc(in)) != EOF;) {
    line->push_back(static_cast<char>(c));
    if (c == '\n') break;
  }
  return !line->empty();
}

// Whether the line is "%%[MESSAGE]", "%%[TEXT]" or "%%[FILE]" (without
// regard to case, trailing blanks and control bytes ignored): the end of a
// text section.
bool IsSectionEnd(const std::string& line) {
  size_t length = line.size();
  while (length > 0 && (static_cast<unsigned char>(line[length - 1]) <= ' ' ||
                        line[length - 1] == 127))
    --length;
  for (const char* head : {"%%[MESSAGE]", "%%[TEXT]", "%%[FILE]"})
    if (length == std::strlen(head) && para::StartsWithNoCase(line.c_str(), head)) return true;
  return false;
}

// Copies one line's text to out. A bracketed word after an even run of
// percent signs that is a command becomes, for EPSON, (n - 1) / 2 percent
// signs and its printer bytes. A command in another format, and a message
// head inside the text, are format errors: reported, 0xF716.
VLRESULT TranslateLine(const ApiSession& session, std::string_view line, bool epson,
                       EpsonState* state, std::string* out) {
  for (size_t i = 0; i < line.size();) {
    if (line[i] != '%') {
      out->push_back(line[i++]);
      continue;
    }
    size_t run = line.find_first_not_of('%', i);
    if (run == std::string_view::npos) run = line.size();
    const size_t n = run - i;
    FormattingCommand command;
    if (n % 2 == 0 && run < line.size() && line[run] == '[' &&
        ParseFormattingCommand(line.substr(run), &command)) {
      if (command.name == "MESSAGE") {
        ApiReportError(&session, "message text contains %%%%[MESSAGE]");
        return VL_E_SUBMIT_FILE_INVALID;
      }
      if (!epson) {
        ApiReportError(&session, "%%%%[%s] command only valid with Epson format",
                       command.name.c_str());
        return VL_E_SUBMIT_FILE_INVALID;
      }
      if (epson) {
        out->append((n - 1) / 2, '%');
        AppendEpsonBytes(command, state, out);
        i = run + command.length;
        continue;
      }
    }
    out->append(line.substr(i, n));
    i = run;
  }
  return VL_OK;
}

// Copies text lines up to the end of the section, leaving the stream at the
// line that ends it. Each line ends in CR LF as in a text file; a last line
// without a line end keeps none.
VLRESULT CopyText(const ApiSession& session, FILE* in, FILE* out, bool epson,
                  const char* bodyFile) {
  EpsonState state;  // bold and underline start off in every section
  std::string line, text;
  for (;;) {
    const long start = std::ftell(in);
    if (!ReadRawLine(in, &line)) break;
    if (IsSectionEnd(line)) {
      std::fseek(in, start, SEEK_SET);
      break;
    }
    const bool ended = line.back() == '\n';
    size_t length = line.size() - (ended ? 1 : 0);
    if (ended && length > 0 && line[length - 1] == '\r') --length;
    text.clear();
    if (VLRESULT rc =
            TranslateLine(session, std::string_view(line).substr(0, length), epson, &state, &text))
      return rc;
    if (ended) text += "\r\n";
    if (std::fwrite(text.data(), 1, text.size(), out) != text.size()) return WriteError(session);
  }
  return std::ferror(in) ? ReadError(session, bodyFile) : VL_OK;
}

}  // namespace

VLRESULT CopyDataSection(const ApiSession& session, FILE* submit, FILE* out,
                         const char* extension) {
  if (!submit || !out || !extension) {
    ReportNullArgument(&session, !submit ? "submit" : !out ? "out" : "extension");
    return VL_E_INVALID_PARAM;
  }
  const DataFormat* format = CheckedFormat(session, extension);
  if (!format) return VL_E_INVALID_PARAM;

  char head[para::kLineSize];
  if (!para::ReadLine(submit, head, sizeof head)) {
    if (std::ferror(submit)) return ReadError(session, nullptr);
    head[0] = '\0';
  }
  FILE* source = submit;
  para::Opened body;
  char name[para::kLineSize] = {};
  if (para::EqualNoCase(head, "%%[FILE]")) {
    if (!para::ReadLine(submit, name, sizeof name)) {
      if (std::ferror(submit)) return ReadError(session, nullptr);
      ApiReportError(&session, "%s", "File name missing from %%[FILE] section in submit file");
      return VL_E_SUBMIT_FILE_INVALID;
    }
    body = para::OpenShared(name, "rb");
    if (!body) {
      ApiReportError(&session, "Unable to open file %s", name);
      return VL_E_FILE_NOT_FOUND;
    }
    source = body.get();
  } else if (!para::EqualNoCase(head, "%%[TEXT]")) {
    ApiReportError(&session, "%%%%[TEXT] or %%%%[FILE] section not found in submit file");
    return VL_E_SUBMIT_FILE_INVALID;
  }

  const char* bodyFile = body ? name : nullptr;
  const bool text = format->code == kFormatAscii || format->code == kFormatEpson;
  VLRESULT rc = text ? CopyText(session, source, out, format->code == kFormatEpson, bodyFile)
                     : CopyBlocks(session, source, out, bodyFile);
  if (rc) return rc;
  if (std::fflush(out) != 0 || std::ferror(out)) return WriteError(session);
  return VL_OK;
}

}  // namespace vl
