/// \file
/// The version of the quarl headers, which is the version of the library
/// they were installed with.
#ifndef QUARL_VERSION_H
#define QUARL_VERSION_H

#define QUARL_VERSION_MAJOR 0         ///< the first of the three numbers of the version
#define QUARL_VERSION_MINOR 1         ///< the second
#define QUARL_VERSION_PATCH 0         ///< the third
#define QUARL_VERSION_STRING "0.1.0"  ///< the three, as "MAJOR.MINOR.PATCH"

#endif
