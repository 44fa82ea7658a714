// The format language's messages, 206 to 259: the parser's, those of the
// Fmt and Scan engines and those of the checking of printf, scanf and
// variadic calls against their format strings.
#pragma once

#include "services/messages.h"

namespace tollan::services {

extern const MessageRange kFormatLanguageMessages;

}  // namespace tollan::services
