/* Names beyond the published standard that some hosts know. A host that does not know them refuses to set them and
   answers "unknown" when they are read; nothing may depend on more. */
#ifndef OPENFX_EXTENSIONS_H
#define OPENFX_EXTENSIONS_H

/* Blue-first layouts. The pixel order stands on clips and images; without it the depth name decides. */
#define kOfxBitDepthByteBGR "OfxBitDepthByteBGR"
#define kOfxBitDepthShortBGR "OfxBitDepthShortBGR"
#define kOfxBitDepthFloatBGR "OfxBitDepthFloatBGR"
#define kOfxImageEffectPropPixelOrder "OfxImageEffectPropPixelOrder"
#define kOfxImagePixelOrderRGBA "OfxImagePixelOrderRGBA"
#define kOfxImagePixelOrderBGRA "OfxImagePixelOrderBGRA"

/* OpenCL: the context beside the standard's command queue. */
#define kOfxImageEffectPropOpenCLContext "OfxImageEffectPropOpenCLContext"

/* Help: the help file's name and the page in it. */
#define kOfxImageEffectPropHelpFile "OfxImageEffectPropHelpFile"
#define kOfxImageEffectPropHelpContextID "OfxImageEffectPropHelpContextID"
#define kOfxImageEffectActionInvokeHelp "OfxImageEffectActionInvokeHelp"
#define kOfxImageEffectActionInvokeAbout "OfxImageEffectActionInvokeAbout"

/* Legacy keyframes: the plug-in names the legacy effect that it replaces, the host hands over its saved records. */
#define kOfxImageEffectActionOrvixKeyframeUplift "OfxImageEffectActionOrvixKeyframeUplift"
#define kOfxImageEffectPropOrvixUpliftGUID "OfxImageEffectPropOrvixUpliftGUID"
#define kOfxPropOrvixUpliftKeyframeData "OfxPropOrvixUpliftKeyframeData"
#define kOfxPropOrvixUpliftData "OfxPropOrvixUpliftData"
#define kOfxPropOrvixUpliftDataLength "OfxPropOrvixUpliftDataLength"

/* Render arguments: the project's timecode, in frames. */
#define kOfxPropOrvixTimeCode "OfxPropOrvixTimeCode"

/* Parameters: colour wheels and polar pairs. */
#define kOfxParamDoubleTypePolar "OfxParamDoubleTypePolar"
#define kOfxParamDoubleTypeChrominance "OfxParamDoubleTypeChrominance"
#define kOfxParamPropColorWheelLevel "OfxParamPropColorWheelLevel"

/* Suites of the editor; their records are the editor's own. */
#define kOfxOrvixProgressSuite "OfxOrvixProgressSuite"
#define kOfxOrvixStereoscopicImageEffectSuite "OfxOrvixStereoscopicImageEffectSuite"
#define kOfxOrvixKeyframeSuite "OfxOrvixKeyframeSuite"
#define kOfxOrvixEffectSuite "OfxOrvixEffectSuite"
#define kOfxHWndInteractSuite "OfxHWndInteractSuite"
#define kOfxHWndOverlayInteractSuite "OfxHWndOverlayInteractSuite"

#endif
