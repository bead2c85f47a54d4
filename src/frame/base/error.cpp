// SPDX-License-Identifier: Apache-2.0
// The error state, and the texts of its codes.
#include "frame/base/error.h"

#include <zarncore/zarncore.h>

#include "frame/base/boundary.h"
#include "frame/base/text.h"

namespace frame {

void SetError(ZARNNETERROR code, const Place& at) {
  KOPACErrSetEx(static_cast<unsigned short>(code), at.source, at.line);
}

InnerError::InnerError()
    : code(KOPACErrGet()), file(KOPACErrorGetFile()), line(KOPACErrorGetLine()) {}

ErrorUnchanged::ErrorUnchanged() {
  CopyText(before_.file == nullptr ? "" : before_.file, file_);
}

ErrorUnchanged::~ErrorUnchanged() {
  KOPACErrSetEx(static_cast<unsigned short>(before_.code), file_, before_.line);
}

}  // namespace frame

namespace {

struct Description {
  const char* name;
  const char* text;
};

// No default: the compiler asks for the texts of a code that is added.
Description Describe(unsigned int number) {
  switch (static_cast<ZARNNETERROR>(number)) {
    case ZARNNETERR_NONE:
      return {"ZARNNETERR_NONE", "nothing has failed"};
    case ZARNNETERR_TABLE_FULL:
      return {"ZARNNETERR_TABLE_FULL", "a table of fixed size is full"};
    case ZARNNETERR_NO_MEMORY:
      return {"ZARNNETERR_NO_MEMORY", "out of memory"};
    case ZARNNETERR_LOCK:
      return {"ZARNNETERR_LOCK", "another process holds the network configuration"};
    case ZARNNETERR_OPEN:
      return {"ZARNNETERR_OPEN", "a file or socket could not be opened"};
    case ZARNNETERR_READ:
      return {"ZARNNETERR_READ", "a file could not be read to its end"};
    case ZARNNETERR_WRITE:
      return {"ZARNNETERR_WRITE", "a file could not be written"};
    case ZARNNETERR_BAD_PARAMETER:
      return {"ZARNNETERR_BAD_PARAMETER", "an argument is missing or out of range"};
    case ZARNNETERR_HOSTNAME_LENGTH:
      return {"ZARNNETERR_HOSTNAME_LENGTH", "the host name is empty or too long"};
    case ZARNNETERR_MALFORMED_ADDRESS:
      return {"ZARNNETERR_MALFORMED_ADDRESS", "not a well-formed IPv4 address or netmask"};
    case ZARNNETERR_RENAME:
      return {"ZARNNETERR_RENAME", "a new file could not take the place of the old one"};
    case ZARNNETERR_COMMAND:
      return {"ZARNNETERR_COMMAND", "a program that makes the change failed"};
    case ZARNNETERR_VLAN_QUERY:
      return {"ZARNNETERR_VLAN_QUERY", "the kernel did not answer the VLAN query"};
    case ZARNNETERR_UNEXPECTED_CONTENT:
      return {"ZARNNETERR_UNEXPECTED_CONTENT",
              "a file of the kernel reads otherwise than expected"};
    case ZARNNETERR_REFUSED:
      return {"ZARNNETERR_REFUSED", "the system refused the request"};
    case ZARNNETERR_EXISTS:
      return {"ZARNNETERR_EXISTS", "it exists already"};
    case ZARNNETERR_NOT_FOUND:
      return {"ZARNNETERR_NOT_FOUND", "there is no such interface, or it is of another kind"};
    case ZARNNETERR_SLAVES_FULL:
      return {"ZARNNETERR_SLAVES_FULL", "the bond has its most slaves already"};
  }
  return {nullptr, nullptr};
}

}  // namespace

const char* ZARNNetErrorName(unsigned int code) {
  return frame::Boundary(nullptr, [&]() -> const char* { return Describe(code).name; });
}

const char* ZARNNetErrorText(unsigned int code) {
  return frame::Boundary(nullptr, [&]() -> const char* { return Describe(code).text; });
}

void ZARNNetErrorClear() {
  frame::Boundary([] { KOPACErrSetEx(ZARNNETERR_NONE, "", 0); });
}
