// The catalog's part of the native module, built when SQLite was found.
#ifndef QUARL_PYTHON_CATALOG_H
#define QUARL_PYTHON_CATALOG_H

#include <pybind11/pybind11.h>

// Adds FileRecord, Catalog, CatalogError, read_file_record(_from_bytes),
// scan_trees and the query builders to the module.
void BindCatalogModule(pybind11::module_& m);

#endif
