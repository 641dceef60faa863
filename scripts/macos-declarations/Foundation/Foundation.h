// The few declarations of Apple's Foundation that the program's Objective-C++ sources use, written from its
// public documentation, so that they can be checked on a machine without Apple's frameworks.
#pragma once

#import <objc/objc.h>

typedef long NSInteger;
typedef unsigned long NSUInteger;

@class NSDictionary, NSError, NSString, NSURL;

__attribute__((objc_root_class))
@interface NSObject
+ (instancetype)alloc;
- (instancetype)init;
@end

@interface NSString : NSObject
@property(readonly) const char* UTF8String;
- (BOOL)isEqualToString:(NSString*)other;
@end

@interface NSDictionary : NSObject
- (id)objectForKeyedSubscript:(id)key;
@end

@interface NSError : NSObject
@property(readonly) NSString* domain;
@property(readonly) NSInteger code;
@property(readonly) NSString* localizedDescription;
@property(readonly) NSDictionary* userInfo;
@end

@interface NSURL : NSObject
+ (NSURL*)fileURLWithFileSystemRepresentation:(const char*)path
                                  isDirectory:(BOOL)isDirectory
                                relativeToURL:(NSURL*)base;
- (BOOL)getResourceValue:(out id __autoreleasing*)value
                  forKey:(NSString*)key
                   error:(out NSError* __autoreleasing*)error;
@end

typedef NSUInteger NSFileCoordinatorWritingOptions;
static const NSFileCoordinatorWritingOptions NSFileCoordinatorWritingForDeleting = 1;

@interface NSFileCoordinator : NSObject
- (instancetype)initWithFilePresenter:(id)presenter;
- (void)coordinateWritingItemAtURL:(NSURL*)url
                           options:(NSFileCoordinatorWritingOptions)options
                             error:(NSError* __autoreleasing*)error
                        byAccessor:(void (^)(NSURL* url))accessor;
@end

@interface NSFileManager : NSObject
@property(class, readonly) NSFileManager* defaultManager;
- (BOOL)evictUbiquitousItemAtURL:(NSURL*)url error:(NSError* __autoreleasing*)error;
@end

extern NSString* const NSPOSIXErrorDomain;
extern NSString* const NSCocoaErrorDomain;
extern NSString* const NSUnderlyingErrorKey;
extern NSString* const NSURLUbiquitousItemDownloadingStatusKey;
extern NSString* const NSURLUbiquitousItemDownloadingStatusNotDownloaded;
