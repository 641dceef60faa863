#include "CleanerCore/Platform/CloudStorage.h"

#include "CleanerCore/Platform/Removal.h"

#import <Foundation/Foundation.h>

namespace loftmere::CloudStorage {

namespace {

FailureDomain domainOf(NSError* error) {
    if ([error.domain isEqualToString:NSPOSIXErrorDomain]) return FailureDomain::posix;
    if ([error.domain isEqualToString:NSCocoaErrorDomain]) return FailureDomain::cocoa;
    return FailureDomain::loftmere;
}

Failure failureFrom(NSError* error) {
    Failure failure{.domain = domainOf(error),
                    .code = static_cast<int>(error.code),
                    .message = error.localizedDescription.UTF8String};
    if (NSError* underlying = error.userInfo[NSUnderlyingErrorKey]) {
        failure.underlying = std::make_shared<const Failure>(failureFrom(underlying));
    }
    return failure;
}

NSURL* urlOf(const std::string& path) {
    return [NSURL fileURLWithFileSystemRepresentation:path.c_str() isDirectory:NO relativeToURL:nil];
}

} // namespace

Status coordinatedRemove(const Place& place) {
    @autoreleasepool {
        NSFileCoordinator* coordinator = [[NSFileCoordinator alloc] initWithFilePresenter:nil];
        NSError* refusal = nil;
        __block Status outcome;
        [coordinator coordinateWritingItemAtURL:urlOf(place.realPath())
                                        options:NSFileCoordinatorWritingForDeleting
                                          error:&refusal
                                     byAccessor:^(NSURL*) {
                                       outcome = removeItem(place);
                                     }];
        if (refusal == nil) return outcome;
        if (removeItem(place)) return {};
        return failed(failureFrom(refusal));
    }
}

std::optional<bool> isContentLocal(const std::string& path) {
    @autoreleasepool {
        NSString* status = nil;
        const BOOL read = [urlOf(path) getResourceValue:&status
                                                 forKey:NSURLUbiquitousItemDownloadingStatusKey
                                                  error:nil];
        if (!read || status == nil) return std::nullopt;
        return ![status isEqualToString:NSURLUbiquitousItemDownloadingStatusNotDownloaded];
    }
}

Status evict(const std::string& path) {
    @autoreleasepool {
        NSError* error = nil;
        if ([NSFileManager.defaultManager evictUbiquitousItemAtURL:urlOf(path) error:&error]) return {};
        return failed(failureFrom(error));
    }
}

Status mayEvict() {
    return {};
}

} // namespace loftmere::CloudStorage
