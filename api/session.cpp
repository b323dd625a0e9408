#include "api/session.h"

#include <mutex>
#include <unordered_map>

namespace vl {
namespace {

std::mutex g_tableLock;
std::unordered_map<VLHANDLE, SessionPtr> g_table;
VLHANDLE g_nextHandle = 0x00A10001;

// The next handle value that is neither 0 nor in use.
VLHANDLE ReserveHandle() {
  std::lock_guard<std::mutex> guard(g_tableLock);
  while (g_nextHandle == 0 || g_table.count(g_nextHandle)) ++g_nextHandle;
  return g_nextHandle++;
}

}  // namespace

SessionPtr NewSession(VLERRORPROC errorCallback) {
  auto session = std::make_shared<ApiSession>();
  session->magic = kSessionMagic;
  session->errorCallback = errorCallback;
  session->handle = ReserveHandle();
  return session;
}

void RegisterSession(const SessionPtr& session) {
  std::lock_guard<std::mutex> guard(g_tableLock);
  g_table[session->handle] = session;
}

SessionPtr SessionFromHandle(VLHANDLE handle) {
  if (handle == 0) return nullptr;
  std::lock_guard<std::mutex> guard(g_tableLock);
  auto it = g_table.find(handle);
  if (it == g_table.end() || it->second->magic != kSessionMagic) return nullptr;
  return it->second;
}

void UnregisterSession(VLHANDLE handle) {
  SessionPtr last;  // freed outside the lock
  std::lock_guard<std::mutex> guard(g_tableLock);
  auto it = g_table.find(handle);
  if (it == g_table.end()) return;
  last = std::move(it->second);
  g_table.erase(it);
}

}  // namespace vl
