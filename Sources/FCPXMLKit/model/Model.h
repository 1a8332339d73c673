#pragma once

#include "FCPXMLKit/model/FCPXML.h"
#include "FCPXMLKit/xml/FCPXMLDTDFixer.h"
#include "FCPXMLKit/xml/FCPXMLError.h"

// The whole document model, for code that builds documents.
