#include "library_faults.h"

#include "ulo/export.h"

#include <cstddef>
#include <dlfcn.h>
#include <fstream>
#include <sstream>

namespace {

Loader* loader = nullptr;

}  // namespace

extern "C" {
// Functions of the leak checker, if it is linked.
void __lsan_disable() __attribute__((weak));
void __lsan_enable() __attribute__((weak));

void* __real_dlopen(const char* name, int flags);
void* __real_dlsym(void* handle, const char* name);
int __real_dlclose(void* handle);
void* __real_malloc(std::size_t size);

ULO_EXPORT void* __wrap_dlopen(const char* name, int flags);
void* __wrap_dlopen(const char* name, int flags) {
  if (loader != nullptr)
    loader->opened.push_back(name + std::string(flags == RTLD_LAZY ? " lazy" : " other"));
  return loader != nullptr && loader->libraryMissing ? nullptr : __real_dlopen(name, flags);
}

ULO_EXPORT void* __wrap_dlsym(void* handle, const char* name);
void* __wrap_dlsym(void* handle, const char* name) {
  if (loader == nullptr)
    return __real_dlsym(handle, name);
  loader->lookedUp.emplace_back(name);
  if (loader->missing.contains(name))
    return nullptr;
  const auto replaced = loader->replaced.find(name);
  return replaced != loader->replaced.end() ? replaced->second : __real_dlsym(handle, name);
}

ULO_EXPORT int __wrap_dlclose(void* handle);
int __wrap_dlclose(void* handle) {
  if (loader != nullptr)
    ++loader->closed;
  return __real_dlclose(handle);
}

ULO_EXPORT void* __wrap_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) {
  const bool fails = loader != nullptr && loader->failingMalloc > 0 && --loader->failingMalloc == 0;
  return fails ? nullptr : __real_malloc(size);
}
}

VObjectLibrary::VObjectLibrary() {
  loader = &loader_;
}

VObjectLibrary::~VObjectLibrary() {
  loader = nullptr;
}

std::string VObjectLibrary::fileWith(const std::string& contents) {
  const std::string name = directory_.path() / "in.vcs";
  std::ofstream(name, std::ios::binary) << contents;
  return name;
}

QString VObjectLibrary::outName() const {
  return QString::fromStdString(directory_.path() / "out.vcs");
}

std::string VObjectLibrary::written() const {
  std::ostringstream contents;
  contents << std::ifstream(directory_.path() / "out.vcs", std::ios::binary).rdbuf();
  return contents.str();
}

RealLibrary::RealLibrary() : handle_(__real_dlopen("libicalvcal.so", RTLD_LAZY)) {}

RealLibrary::~RealLibrary() {
  __real_dlclose(handle_);
}

void* RealLibrary::address(const char* name) const {
  return __real_dlsym(handle_, name);
}

bool RealLibrary::isLoaded() {
  void* handle = __real_dlopen("libicalvcal.so", RTLD_LAZY | RTLD_NOLOAD);
  if (handle != nullptr)
    __real_dlclose(handle);
  return handle != nullptr;
}

LeaksExpected::LeaksExpected() {
  if (__lsan_disable != nullptr)
    __lsan_disable();
}

LeaksExpected::~LeaksExpected() {
  if (__lsan_enable != nullptr)
    __lsan_enable();
}

const std::string threeTodos = "BEGIN:VCALENDAR\r\nVERSION:1.0\r\nBEGIN:VTODO\r\n"
                               "SUMMARY;CHARSET=UTF-8:first\r\nDALARM:20060305T120000Z;;;x;y\r\n"
                               "END:VTODO\r\nBEGIN:VTODO\r\nSUMMARY:second\r\nEND:VTODO\r\n"
                               "BEGIN:VTODO\r\nSUMMARY:third\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";

std::string errorLine(const std::string& message) {
  return "(utility/ZVtodoParser.cpp)" + message;
}
