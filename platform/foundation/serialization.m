// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#import "platform/foundation/serialization.h"

id zr7700_ParsePropertyList(NSData* data) {
  id list = nil;
  @try {
    list = [NSPropertyListSerialization propertyListWithData:data
                                                     options:NSPropertyListMutableContainersAndLeaves
                                                      format:NULL
                                                       error:NULL];
  } @catch (NSException* refusal) {
    (void)refusal;
    list = nil;
  }
  return list;
}

NSData* zr7700_XmlOfPropertyList(id list) {
  NSData* xml = nil;
  @try {
    xml = [NSPropertyListSerialization dataWithPropertyList:list
                                                     format:NSPropertyListXMLFormat_v1_0
                                                    options:0
                                                      error:NULL];
  } @catch (NSException* refusal) {
    (void)refusal;
    xml = nil;
  }
  return xml;
}
