// One file's record for the catalog: the facts of a lenient header read,
// taken over into the rows of FileRecord.
#ifndef QUARL_CATALOG_RECORD_H
#define QUARL_CATALOG_RECORD_H

#include <quarl/quarl.h>

#include <cstddef>
#include <string>

#include "catalog/catalog_db.h"

namespace quarl::catalog {

// The read options of the catalog: lenient, headers only with the data's
// ends, bounded as the programs' reads are by the size of the file.
CLasReadOptions CatalogReadOptions(size_t fileSize);

// Whether a header read left a data section without its first and last
// row although it may have rows (a LAS 3.0 or wrapped file, whose rows a
// header read passes over), or a first or last row holds a token that is
// no clean number (the full read's column rules may make it text): such a
// file is read again in full.
bool NeedsFullRead(const CLasReader& reader);

// Fills version, wrap, result, reading, the Well lines, the curves with
// their first and last index value, the other sections' lines and the notes
// from a read that ended with `result`.
void FillFromRead(const CLasReader& reader, ELASFILEERROR result, FileRecord* record);

}  // namespace quarl::catalog

#endif
