#include "Platform/Entities/ServicePublish/ServicePublishGroupConfig.h"

#include "Platform/Orm/MutatorReinstantiatingError.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<PublishConfig> ServicePublishGroupConfig::publishConfigIs(const String& path,
                                                              const String& remotePath,
                                                              const String& type) {
  if (PublishConfig* present = publishConfig_.find(path)) {
    Orm::requireSame("remotePath", present->remotePath(), remotePath);
    Orm::requireSame("type", present->type(), type);
    return present;
  }
  return memberIs(publishConfig_, Attr::publishConfig,
                  Orm::make<PublishConfig>(path, remotePath, type));
}

Ptr<PublishDir> ServicePublishGroupConfig::publishDirIs(const String& path, const String& type,
                                                        const String& remotePath) {
  if (PublishDir* present = publishDir_.find(path)) {
    Orm::requireSame("type", present->type(), type);
    Orm::requireSame("remotePath", present->remotePath(), remotePath);
    return present;
  }
  return memberIs(publishDir_, Attr::publishDir, Orm::make<PublishDir>(path, type, remotePath));
}

}  // namespace Controller
