#include "base/inherited_rights.h"

#include <cerrno>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

// It can only be read by setting it, and so before there is another thread.
const mode_t process_mask = [] {
    const mode_t mask = umask(0777);
    umask(mask);
    return mask;
}();

bool remove_attribute(int file, const char* name) {
    return fremovexattr(file, name) == 0 || errno == ENODATA || errno == ENOTSUP;
}

bool has_own_group(int file) {
    struct stat status;
    return fstat(file, &status) == 0 && status.st_gid == getegid();
}

} // namespace

void set_rights(int file, mode_t permissions) {
    const bool has_no_list = remove_attribute(file, "system.posix_acl_access");
    const bool is_of_group =
        has_own_group(file) || fchown(file, static_cast<uid_t>(-1), getegid()) == 0;
    const mode_t inherited = has_no_list && is_of_group ? 0 : S_IRWXG;
    (void)!fchmod(file, permissions & ~(process_mask | inherited));
}

bool pass_no_rights_on(int directory) {
    return remove_attribute(directory, "system.posix_acl_default");
}
