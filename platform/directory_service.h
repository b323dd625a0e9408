// The directory service as the platform layer offers it: the global
// catalogue's search interface, an object's search interface or attribute
// by its path, and the replacement of an attribute's values. The system's
// implementation loads the directory services library on first use; a test
// puts a stand-in in its place (fault::UseDirectory) or fails a call by
// fault injection (Op::LoadDirectory, Op::Directory).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace os::ads {

// A COM result: 0 is success, negative values are failures.
using Result = int32_t;
inline constexpr Result kOk = 0;
inline constexpr Result kNotImplemented = static_cast<Result>(0x80004001);
inline constexpr Result kNoInterface = static_cast<Result>(0x80004002);
inline constexpr Result kFail = static_cast<Result>(0x80004005);
inline constexpr Result kPropertyNotFound = static_cast<Result>(0x8000500D);
inline constexpr Result kColumnNotSet = static_cast<Result>(0x80005010);
inline constexpr Result kNotFound = static_cast<Result>(0x80070490);  // no such object

inline bool Failed(Result result) { return result < 0; }

// One attribute of a search row with its values, 8-bit in the system code
// page.
struct Column {
  std::string name;
  std::vector<std::string> values;
};

// One object found by a search.
struct Row {
  std::vector<Column> columns;
  // The values of the attribute called name (compared without case), or
  // null when the row has none.
  const std::vector<std::string>* Values(std::string_view name) const;
};

// A search interface bound to one container.
class Search {
 public:
  virtual ~Search() = default;
  // Searches the subtree with filter, asking for attributes, and appends one
  // row per object in the directory's order.
  virtual Result Execute(const std::string& filter, const std::vector<std::string>& attributes,
                         std::vector<Row>* rows) = 0;
};

// The step of the global-catalogue bind that failed.
enum class CatalogStep { Open, Enumerator, Element };

class Provider {
 public:
  virtual ~Provider() = default;
  // Whether the directory services library is there (loaded on first use).
  virtual bool Load() = 0;
  // Opens "GC:" and takes the search interface of its first element; kOk
  // with a null search when that element offers none.
  virtual Result OpenGlobalCatalog(std::unique_ptr<Search>* search, CatalogStep* failedStep) = 0;
  // Reads one text attribute of the object at path.
  virtual Result ReadAttribute(const std::string& path, const std::string& name,
                               std::string* value) = 0;
  // Binds the object at path, asking for its search interface.
  virtual Result OpenSearch(const std::string& path, std::unique_ptr<Search>* search) = 0;
  // Replaces every value of attribute of the object at path.
  virtual Result ReplaceValues(const std::string& path, const std::string& attribute,
                               const std::vector<std::string>& values) = 0;
};

// The system's directory services.
Provider& SystemDirectory();

// Calls on the provider in use, each failing as fault injection says.
bool Load();
Result OpenGlobalCatalog(std::unique_ptr<Search>* search, CatalogStep* failedStep);
Result ReadAttribute(const std::string& path, const std::string& name, std::string* value);
Result OpenSearch(const std::string& path, std::unique_ptr<Search>* search);
Result ReplaceValues(const std::string& path, const std::string& attribute,
                     const std::vector<std::string>& values);

// Keeps the calling thread in a COM apartment while it lives (a no-op
// where there is no COM, or when the thread is in one already).
class Apartment {
 public:
  Apartment();
  ~Apartment();
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;

 private:
  bool entered_ = false;
};

}  // namespace os::ads
