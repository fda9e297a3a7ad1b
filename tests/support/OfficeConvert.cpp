#include "OfficeConvert.h"

#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <sys/wait.h>

namespace fs = std::filesystem;

namespace zptest {
namespace {

std::string Quote(const std::string& s) {
    std::string out = "'";
    for (char c : s) {
        if (c == '\'')
            out += "'\\''";
        else
            out += c;
    }
    return out + "'";
}

bool OnPath(const std::string& name) {
    const char* path = std::getenv("PATH");
    if (!path)
        return false;
    std::stringstream dirs(path);
    std::string dir;
    while (std::getline(dirs, dir, ':')) {
        if (!dir.empty() && fs::exists(fs::path(dir) / name))
            return true;
    }
    return false;
}

fs::path UniqueFolder(const std::string& stem) {
    std::random_device rd;
    std::mt19937_64 gen(rd());
    for (;;) {
        fs::path p = fs::temp_directory_path() / (stem + std::to_string(gen() % 100000000000ULL));
        std::error_code ec;
        if (fs::create_directory(p, ec))
            return p;
    }
}

std::string ReadAll(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

}  // namespace

std::string OfficeCommand() {
    for (const char* name : {"soffice", "libreoffice"}) {
        if (OnPath(name))
            return name;
    }
    return {};
}

OfficeConversion ConvertWithOffice(const fs::path& input, const std::string& target, const fs::path& outDir) {
    OfficeConversion result;
    const std::string office = OfficeCommand();
    if (office.empty()) {
        result.log = "no LibreOffice on this machine";
        return result;
    }
    fs::create_directories(outDir);
    const fs::path profile = UniqueFolder("zp-office-profile-");
    const fs::path logFile = profile / "convert.log";
    std::string ext = target.substr(0, target.find(':'));
    result.output = outDir / (input.stem().string() + "." + ext);
    std::error_code ec;
    fs::remove(result.output, ec);

    // HOME is set as well: LibreOffice writes into it even with an own profile.
    std::string cmd = "HOME=" + Quote(profile.string()) + " timeout 180 " + office +
                      " -env:UserInstallation=" + Quote("file://" + (profile / "user").string()) +
                      " --headless --norestore --convert-to " + Quote(target) + " --outdir " +
                      Quote(outDir.string()) + " " + Quote(input.string()) + " >" + Quote(logFile.string()) +
                      " 2>&1";
    int status = std::system(cmd.c_str());
    result.exitCode = (status != -1 && WIFEXITED(status)) ? WEXITSTATUS(status) : -1;
    result.log = ReadAll(logFile);
    result.ok = result.exitCode == 0 && fs::exists(result.output) && fs::file_size(result.output) > 0;
    fs::remove_all(profile, ec);
    return result;
}

std::string OfficeDocumentText(const fs::path& input, OfficeConversion* result) {
    const fs::path out = UniqueFolder("zp-office-text-");
    OfficeConversion conv = ConvertWithOffice(input, "txt:Text (encoded):UTF8", out);
    std::string text = conv.ok ? ReadAll(conv.output) : std::string();
    std::error_code ec;
    fs::remove_all(out, ec);
    if (result)
        *result = conv;
    // LibreOffice starts the text with a byte order mark
    if (text.rfind("\xEF\xBB\xBF", 0) == 0)
        text.erase(0, 3);
    return text;
}

}  // namespace zptest
