// All parts of the framework, registered in the order in which they need each other.
#include "host/framework/Framework.h"

#include "host/framework/Application.h"
#include "host/framework/Containers.h"
#include "host/framework/Date.h"
#include "host/framework/FolderItem.h"
#include "host/framework/Graphics.h"
#include "host/framework/MemoryBlock.h"
#include "host/framework/NumberFunctions.h"
#include "host/framework/Picture.h"
#include "host/framework/RegEx.h"
#include "host/framework/Streams.h"
#include "host/framework/Support.h"
#include "host/framework/System.h"
#include "host/framework/TextEncoding.h"
#include "host/framework/TextFunctions.h"
#include "host/framework/Timer.h"
#include "host/framework/WorldClass.h"

namespace host {

void RegisterFramework(Runtime& runtime) {
    AddExceptionTranslator(&ExceptionClassOf);
    RegisterMemoryBlock(runtime);
    RegisterFolderItem(runtime);
    RegisterPicture(runtime);
    RegisterGraphics(runtime);
    RegisterWorldClass(runtime);
    RegisterTextFunctions(runtime);
    RegisterTextSearchFunctions(runtime);
    RegisterTextFormFunctions(runtime);
    RegisterTextEncodings(runtime);
    RegisterRegEx(runtime);
    RegisterNumberFunctions(runtime);
    RegisterBitFunctions(runtime);
    RegisterColorFunctions(runtime);
    RegisterVariantFunctions(runtime);
    RegisterRandom(runtime);
    RegisterTextStreams(runtime);
    RegisterBinaryStream(runtime);
    RegisterStandardStreams(runtime);
    RegisterApplication(runtime);
    RegisterSystem(runtime);
    RegisterTimer(runtime);
    RegisterDate(runtime);
    RegisterDictionary(runtime);
    RegisterCollection(runtime);
}

}  // namespace host
