#pragma once

#include <optional>
#include <string>

#include "vorlu/install/verification.h"

namespace vorlu {

struct Vorlu;

/// One attempt to bring the selected app's installer into the cache under `fileName`; the outcome also stands in
/// `downloadFinished` and `downloadFailed`. Gives the digest that was taken while the bytes arrived. A first attempt
/// (`isRetry` false) that finds a file there removes it and is over. `interactive`: the bar moves by 10 meanwhile.
std::optional<FileDigest> downloadInstaller(Vorlu& vorlu, bool isRetry, bool interactive, const std::string& appName,
                                            const std::string& fileName, const std::string& operationLabel);

/// One transfer.
struct Transfer {
  std::string url;
  std::string destination;
  std::string headerKey;  ///< the header is sent when key and value are both there
  std::string headerValue;
};
std::optional<FileDigest> downloadFile(Vorlu& vorlu, bool isRetry, const Transfer& transfer);

enum class FetchEnd {
  done,
  refused,      ///< no URL, or the server has nothing of use there
  unreachable,  ///< the transport failed
};
/// One transfer to a place that it clears first; the file belongs to root:wheel then. A failure is logged.
FetchEnd fetchInto(Vorlu& vorlu, const Transfer& transfer);

}  // namespace vorlu
