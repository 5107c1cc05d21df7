// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace tidewright::demo {

struct KubeconfigContext
{
    std::string name; ///< also the name of its cluster, and the path below the server's address
    std::string ns;
};

/// YAML text with one context per entry, the first one current. authority is PEM and empty for plain HTTP.
std::string kubeconfigText(
    const std::vector<KubeconfigContext> &contexts, int port, const std::string &authority);

/// A kubeconfig on disk, readable by the user alone. With an empty path it lies in a private temporary
/// folder. What was written is removed by remove(), which is safe in the last moments of a process.
class KubeconfigFile
{
public:
    explicit KubeconfigFile(const std::string &path);

    /// False when the file cannot be written; errno says why.
    bool write(const std::string &text);
    void remove() const;
    const std::string &path() const { return m_path; }

private:
    std::string m_folder; ///< only when it is our own
    std::string m_path;
};

} // namespace tidewright::demo
