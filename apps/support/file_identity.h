// Whether two paths name one file, so that a program never writes over the
// file it reads.
#ifndef QUARL_APPS_FILE_IDENTITY_H
#define QUARL_APPS_FILE_IDENTITY_H

#include <string>

namespace quarl::apps {

// True when both paths exist and lead to the same file: the same device and
// inode, whatever the spelling ("in.las", "./in.las", an absolute path), and
// through symbolic and hard links alike. False when either does not exist.
bool SameFile(const std::string& a, const std::string& b);

}  // namespace quarl::apps

#endif
