// How the library names its keys: one key a product, below it a section and, in most sections, a folder of
// the installed version.
#pragma once

#include "foundation/memory/XpSharedPtr.h"
#include "foundation/registry/XpRegistry.h"

class SfRegistry : public XpRegistry {};

/// Path of a product's section; an empty section is the product itself. The version's folder is left out for
/// the sections that all versions share.
XpString SfRegistryKeyPath(const XpString& product, const XpString& section, const XpString& sub);
/// The current user's key; holds null when it cannot be opened.
XpSharedPtr<SfRegistry> SfRegistryOpenRead(const XpString& section, const XpString& sub);
/// Makes the key.
XpSharedPtr<SfRegistry> SfRegistryOpenWrite(const XpString& section, const XpString& sub);
/// "1.0" unless the machine's settings name another.
XpString SfSectionVersion(const XpString& section);
XpString SfSectionVersionPath(const XpString& section);
