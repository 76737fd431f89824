// The objects on the test token, in a text file that outlives the module.
#pragma once

#include "../ber/ber.h"

#include <windows.h>

#include <p11-kit/pkcs11.h>

#include <map>
#include <vector>

namespace Corvane::Platform::Token {

using Object = std::map<CK_ATTRIBUTE_TYPE, Bytes>;

Object objectOf(const CK_ATTRIBUTE* attributes, CK_ULONG count);
bool isTrue(const Object& object, CK_ATTRIBUTE_TYPE type);
bool isOf(const Object& object, CK_OBJECT_CLASS objectClass);

// By handle, from 1 on.
std::vector<Object> loadObjects();
void storeObjects(const std::vector<Object>& objects);

// What the standard has against a new object (PKCS#11 2.20, 10.1.1 and 10.6 to 10.9); CKR_OK where nothing.
CK_RV checkTemplate(const CK_ATTRIBUTE* attributes, CK_ULONG count, CK_OBJECT_CLASS objectClass);

}  // namespace Corvane::Platform::Token
