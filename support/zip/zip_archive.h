#pragma once

// Zip archives on disk, read and written.
#include "support/zip/zip_reader.h"
#include "support/zip/zip_writer.h"
