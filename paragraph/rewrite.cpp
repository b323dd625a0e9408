#include "paragraph/rewrite.h"

#include <cstring>

#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

namespace para {
namespace {

// Writes the lines of the work file, remembering whether the last was empty.
class LineWriter {
 public:
  explicit LineWriter(FILE* out) : out_(out) {}
  void Line(const char* text) {
    std::fputs(text, out_);
    std::fputs("\r\n", out_);
    lastEmpty_ = *text == '\0';
  }
  // "keyword", or "keyword value"; nothing for a null value or no keyword.
  void KeywordLine(const char* keyword, const char* value) {
    if (!keyword || !*keyword || !value) return;
    std::string line = keyword;
    if (*value) line.append(" ").append(value);
    Line(line.c_str());
  }
  bool LastEmpty() const { return lastEmpty_; }

 private:
  FILE* out_;
  bool lastEmpty_ = true;
};

// Receives the lines of the file in order and writes the new contents.
class LineEditor {
 public:
  virtual ~LineEditor() = default;
  virtual void OnLine(const char* line, LineWriter& out) = 0;
  virtual void OnEnd(LineWriter& out) = 0;
};

class ParagraphValueEditor : public LineEditor {
 public:
  ParagraphValueEditor(const char* header, const char* keyword, const char* value, bool addAnother)
      : header_(header), keyword_(keyword), value_(value), addAnother_(addAnother) {}

  void OnLine(const char* line, LineWriter& out) override {
    if (IsHeader(line)) {
      if (inTarget_) FinishParagraph(out);
      inTarget_ = StartsWithNoCase(line, header_);
      seen_ = seen_ || inTarget_;
      out.Line(line);
      return;
    }
    if (inTarget_ && *line == '\0') return;  // empty lines inside the paragraph are dropped
    if (inTarget_ && IsContentLine(line)) {
      if (!keyword_) return;  // no keyword: the paragraph is emptied
      if (!addAnother_ && !written_ && StartsWithNoCase(line, keyword_)) {
        WriteKeyword(out);
        return;
      }
    }
    out.Line(line);
  }

  void OnEnd(LineWriter& out) override {
    if (inTarget_ && !written_) WriteKeyword(out);
    if (!seen_) {
      if (!out.LastEmpty()) out.Line("");
      out.Line(header_);
      WriteKeyword(out);
    }
  }

 private:
  void WriteKeyword(LineWriter& out) {
    out.KeywordLine(keyword_, value_);
    written_ = true;
  }
  void FinishParagraph(LineWriter& out) {
    if (!written_) WriteKeyword(out);
    out.Line("");
  }

  const char* header_;
  const char* keyword_;
  const char* value_;
  bool addAnother_;
  bool inTarget_ = false;
  bool seen_ = false;
  bool written_ = false;
};

class GroupValuesEditor : public LineEditor {
 public:
  GroupValuesEditor(const char* header, const char* keyword1, const char* value1, bool keepFirst,
                    const char* keyword2, const char* value2, char stopChar)
      : header_(header), keyword1_(keyword1), value1_(value1 ? value1 : ""),
        keepFirst_(keepFirst), keyword2_(keyword2), value2_(value2), stopChar_(stopChar) {}

  void OnLine(const char* line, LineWriter& out) override {
    if (IsHeader(line)) {
      if (inTarget_) {
        if (inGroup_) CloseGroup(out);
        out.Line("");
      }
      inTarget_ = StartsWithNoCase(line, header_);
      seen_ = seen_ || inTarget_;
      out.Line(line);
      return;
    }
    if (!inTarget_) return out.Line(line);
    if (*line == '\0') return;
    if (inGroup_) {
      if (stopChar_ != 0 && line[0] == stopChar_) {
        CloseGroup(out);
      } else if (!written2_ && keyword2_ && IsContentLine(line) &&
                 StartsWithNoCase(line, keyword2_)) {
        WriteKeyword2(out);
        return;
      }
    } else if (!groupFound_ && keyword1_ && IsContentLine(line) &&
               StartsWithNoCase(line, keyword1_)) {
      groupFound_ = inGroup_ = true;
      if (keepFirst_) return out.Line(line);
      std::string first = std::string(keyword1_) + " " + value1_;
      return out.Line(first.c_str());
    }
    out.Line(line);
  }

  void OnEnd(LineWriter& out) override {
    if (inGroup_) CloseGroup(out);
    if (!seen_) {
      if (!out.LastEmpty()) out.Line("");
      out.Line(header_);
    }
  }

 private:
  void WriteKeyword2(LineWriter& out) {
    out.KeywordLine(keyword2_, value2_);
    written2_ = true;
  }
  void CloseGroup(LineWriter& out) {
    if (!written2_) WriteKeyword2(out);
    inGroup_ = false;
  }

  const char* header_;
  const char* keyword1_;
  const char* value1_;
  bool keepFirst_;
  const char* keyword2_;
  const char* value2_;
  char stopChar_;
  bool inTarget_ = false;
  bool seen_ = false;
  bool groupFound_ = false;
  bool inGroup_ = false;
  bool written2_ = false;
};

// Copies file line by line through editor into temp and copies the result
// back into file.
bool CopyThrough(FILE* file, FILE* temp, LineEditor& editor) {
  LineWriter writer(temp);
  char line[kLineSize];
  while (ReadLine(file, line, sizeof line)) editor.OnLine(line, writer);
  editor.OnEnd(writer);
  if (std::fflush(temp) != 0 || std::ferror(temp) || std::ferror(file)) return false;
  return CopyBack(temp, file) == 0;
}

// Rewrites path through editor, using its work file and keeping the file
// open meanwhile. The work file is deleted whatever happened; success only
// when every step, its deletion included, succeeded.
bool Rewrite(const char* path, LineEditor& editor) {
  std::string work;
  if (!path || !WorkFileName(path, &work)) return false;
  Opened file = OpenShared(path, "r+b");
  if (!file) return false;
  Opened temp = OpenShared(work.c_str(), "w+b");
  if (!temp) return false;
  // The guard deletes the work file should the copy throw.
  auto removeWork = os::scope_exit([&] { RemoveWorkFile(temp.file, work); });
  bool copied = CopyThrough(file.get(), temp.get(), editor);
  removeWork.dismiss();
  return RemoveWorkFile(temp.file, work) && copied;
}

}  // namespace

bool RemoveWorkFile(os::UniqueFile& file, const std::string& path) {
  file.reset();
  return os::RemoveFile(path.c_str()) == 0 || os::RemoveFile(path.c_str()) == 0;
}

bool WorkFileName(const char* path, std::string* work) {
  size_t length = std::strlen(path);
  if (length > kMaxRewritePath) return false;
  const char* name = path;
  for (const char* p = path; *p; ++p)
    if (*p == '\\' || *p == '/' || *p == ':') name = p + 1;
  const char* dot = std::strrchr(name, '.');
  std::string base = dot ? std::string(path, static_cast<size_t>(dot - path)) : path;
  *work = base + (dot && EqualNoCase(dot, ".TMP") ? ".TM2" : ".TMP");
  return work->size() <= kMaxRewritePath;
}

bool SetParagraphValue(const char* path, const char* header, const char* keyword,
                       const char* value, bool addAnother) {
  if (!header) return false;
  ParagraphValueEditor editor(header, keyword, value, addAnother);
  return Rewrite(path, editor);
}

bool SetGroupValues(const char* path, const char* header, const char* keyword1,
                    const char* value1, bool keepFirst, const char* keyword2, const char* value2,
                    char stopChar) {
  if (!header) return false;
  GroupValuesEditor editor(header, keyword1, value1, keepFirst, keyword2, value2, stopChar);
  return Rewrite(path, editor);
}

}  // namespace para
