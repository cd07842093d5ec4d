// SPDX-License-Identifier: GPL-3.0-or-later
#include "Certificates.h"

#include <QByteArray>

#include <unistd.h>

#include <algorithm>
#include <array>

namespace {

bool exists(const char *path)
{
    return path && access(path, R_OK) == 0;
}

} // namespace

void Certificates::use(CURL *easy)
{
    if (const QByteArray chosen = qgetenv("SSL_CERT_FILE"); !chosen.isEmpty()) {
        curl_easy_setopt(easy, CURLOPT_CAINFO, chosen.constData());
        return;
    }
    const curl_version_info_data *curl = curl_version_info(CURLVERSION_NOW);
    if (exists(curl->cainfo) || exists(curl->capath))
        return;
    // Debian and Arch, Fedora, openSUSE.
    static constexpr std::array files{"/etc/ssl/certs/ca-certificates.crt",
                                      "/etc/pki/tls/certs/ca-bundle.crt", "/etc/ssl/ca-bundle.pem"};
    if (const auto found = std::ranges::find_if(files, exists); found != files.end())
        curl_easy_setopt(easy, CURLOPT_CAINFO, *found);
}
