// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <curl/curl.h>

/// The certificate authorities that the system trusts.
namespace Certificates {

/// Makes the request trust the file that SSL_CERT_FILE names, or the file that libcurl was built for. If that
/// is missing, as when libcurl comes from another distribution, it is the first known file that exists.
void use(CURL *easy);

} // namespace Certificates
