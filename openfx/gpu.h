/* The OpenFX C API: rendering on graphics processors. */
#ifndef OPENFX_GPU_H
#define OPENFX_GPU_H

#include "openfx/image_effect.h"

#ifdef __cplusplus
extern "C" {
#endif

#define kOfxStatGPUOutOfMemory 1001
#define kOfxStatGPURenderFailed 1002
#define kOfxStatGLOutOfMemory 1001
#define kOfxStatGLRenderFailed 1002

/* OpenGL. */
#define kOfxImageEffectPropOpenGLRenderSupported "OfxImageEffectPropOpenGLRenderSupported"
#define kOfxOpenGLPropPixelDepth "OfxOpenGLPropPixelDepth"
#define kOfxImageEffectPropOpenGLEnabled "OfxImageEffectPropOpenGLEnabled"
#define kOfxImageEffectPropOpenGLTextureIndex "OfxImageEffectPropOpenGLTextureIndex"
#define kOfxImageEffectPropOpenGLTextureTarget "OfxImageEffectPropOpenGLTextureTarget"
#define kOfxActionOpenGLContextAttached "OfxActionOpenGLContextAttached"
#define kOfxActionOpenGLContextDetached "kOfxActionOpenGLContextDetached"
#define kOfxImageEffectPropCPURenderSupported "OfxImageEffectPropCPURenderSupported"

#define kOfxOpenGLRenderSuite "OfxImageEffectOpenGLRenderSuite"
typedef struct OfxImageEffectOpenGLRenderSuiteV1 {
    OfxStatus (*clipLoadTexture)(OfxImageClipHandle clip, OfxTime time, const char* format, const OfxRectD* region,
                                 OfxPropertySetHandle* textureHandle);
    OfxStatus (*clipFreeTexture)(OfxPropertySetHandle textureHandle);
    OfxStatus (*flushResources)(void);
} OfxImageEffectOpenGLRenderSuiteV1;

/* CUDA and Metal. */
#define kOfxImageEffectPropCudaRenderSupported "OfxImageEffectPropCudaRenderSupported"
#define kOfxImageEffectPropCudaEnabled "OfxImageEffectPropCudaEnabled"
#define kOfxImageEffectPropCudaStreamSupported "OfxImageEffectPropCudaStreamSupported"
#define kOfxImageEffectPropCudaStream "OfxImageEffectPropCudaStream"
#define kOfxImageEffectPropMetalRenderSupported "OfxImageEffectPropMetalRenderSupported"
#define kOfxImageEffectPropMetalEnabled "OfxImageEffectPropMetalEnabled"
#define kOfxImageEffectPropMetalCommandQueue "OfxImageEffectPropMetalCommandQueue"

/* OpenCL: "RenderSupported" means buffers in the image's data property, "Supported" 2-D images in OpenCLImage. */
#define kOfxImageEffectPropOpenCLRenderSupported "OfxImageEffectPropOpenCLRenderSupported"
#define kOfxImageEffectPropOpenCLSupported "OfxImageEffectPropOpenCLSupported"
#define kOfxImageEffectPropOpenCLEnabled "OfxImageEffectPropOpenCLEnabled"
#define kOfxImageEffectPropOpenCLCommandQueue "OfxImageEffectPropOpenCLCommandQueue"
#define kOfxImageEffectPropOpenCLImage "OfxImageEffectPropOpenCLImage"

/* The host compiles a program for all its devices; pResult points at a cl_program. With fOptional non-zero it may
   answer kOfxStatOK and leave the program null. */
#define kOfxOpenCLProgramSuite "OfxOpenCLProgramSuite"
typedef struct OfxOpenCLProgramSuiteV1 {
    OfxStatus (*compileProgram)(const char* pszProgramSource, int fOptional, void* pResult);
} OfxOpenCLProgramSuiteV1;

#ifdef __cplusplus
}
#endif

#endif
