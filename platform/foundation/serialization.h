// Foundation's property-list parser and writer with their exceptions held back.
//
// Plain Objective-C: GCC's Objective-C++ does not survive a thrown Objective-C exception, not even
// where it is caught, so none may reach a C++ frame.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PLATFORM_FOUNDATION_SERIALIZATION_H_
#define ZR7700_PLATFORM_FOUNDATION_SERIALIZATION_H_

#import <Foundation/Foundation.h>

#ifdef __cplusplus
extern "C" {
#endif

// The list that `data` holds in XML or binary form, containers mutable; nil when it holds none.
// Autoreleased. Any thread.
id zr7700_ParsePropertyList(NSData* data);

// `list` as XML; nil when it cannot be written so. Autoreleased. Any thread.
NSData* zr7700_XmlOfPropertyList(id list);

#ifdef __cplusplus
}
#endif

#endif  // ZR7700_PLATFORM_FOUNDATION_SERIALIZATION_H_
