@rem Runs verify.cmd in Windows Sandbox.
@"%~dp0tests\morvane_verify.exe" /sandbox
@exit /b %errorlevel%
