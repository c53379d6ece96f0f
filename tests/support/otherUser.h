// Another user than the one who runs the test, who owns what an attacker would. Only root can give
// files away; for anybody else his files stay the user's own, and a test expects what holds then.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <string>

namespace testsupport {

class OtherUser {
public:
    static constexpr uid_t kUser = 12345;
    static constexpr gid_t kGroup = 23456;

    // Makes the file, or the link itself, his. True when it is now.
    static bool take(const std::string& path) { return lchown(path.c_str(), kUser, kGroup) == 0; }
};

} // namespace testsupport
