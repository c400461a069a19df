#include "support/private_mounts.h"

#include <algorithm>
#include <fstream>
#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <vector>

namespace {

// The mount points but `left_out`. A blank in a name is written as its number there (proc(5)).
std::vector<std::string> mount_points_but(const std::string &left_out) {
    std::vector<std::string> points;
    std::ifstream mounts("/proc/self/mounts");
    std::string device;
    std::string point;
    std::string rest;
    while (mounts >> device >> point && std::getline(mounts, rest)) {
        for (std::size_t at = point.find("\\040"); at != std::string::npos;
             at = point.find("\\040", at)) {
            point.replace(at, 4, " ");
        }
        points.push_back(point);
    }
    std::erase(points, left_out);
    return points;
}

bool is_writable(const std::string &point) {
    struct statvfs status {};
    return ::statvfs(point.c_str(), &status) == 0 && (status.f_flag & ST_RDONLY) == 0;
}

} // namespace

bool shut_in(const std::string &directory) {
    const char *path = directory.c_str();
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        (!directory.empty() && ::mount(path, path, "", MS_BIND, nullptr) != 0)) {
        return false;
    }
    const std::vector<std::string> points = mount_points_but(directory);
    for (const std::string &point : points) {
        ::mount("", point.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr);
    }
    return std::none_of(points.begin(), points.end(), is_writable) && !is_writable("/") &&
           (directory.empty() || is_writable(directory));
}
